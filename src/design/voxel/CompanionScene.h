// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Color.h"
#include "design/Quad.h"

#include <vector>

/// The little creature of the legacy hint card, on its chequered floor.
namespace ostrel::CompanionScene {

/// It moves for this long in its life, in seconds.
inline constexpr double lively = 2;

/// What follows the theme.
struct Colors {
    Color floor;
    Color shade; ///< what right faces lean towards
    Color signal; ///< the cube at its feet
};

/// The cube's colour while nothing calls for attention.
inline constexpr Color calmSignal = zolHex("8b939e");

/// How far it has risen after so many seconds of moving, in cells.
[[nodiscard]] double bob(double phase);

/// Its polygons in a view of that size, in drawing order.
[[nodiscard]] std::vector<Quad> scene(double width, double height, double bob, const Colors& colors);

} // namespace ostrel::CompanionScene
