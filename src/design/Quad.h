// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Color.h"

#include <array>

namespace ostrel {

/// A point in a view's coordinates: points, y growing downward.
struct ScenePoint {
    double x = 0;
    double y = 0;

    constexpr bool operator==(const ScenePoint&) const = default;
};

/// A rectangle in a view's coordinates.
struct SceneRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    [[nodiscard]] constexpr double midX() const { return x + width / 2; }
    [[nodiscard]] constexpr double midY() const { return y + height / 2; }

    constexpr bool operator==(const SceneRect&) const = default;
};

/// One closed polygon of a figure: filled, then outlined with round joins where `strokeWidth` is above 0.
struct Quad {
    std::array<ScenePoint, 4> corners;
    Color fill;
    Color stroke;
    double strokeWidth = 0;
};

} // namespace ostrel
