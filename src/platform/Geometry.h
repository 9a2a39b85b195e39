// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace platform {

/// A point in global screen coordinates: logical points, the origin at the primary display's lower left
/// corner, y growing upward.
struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

/// A rectangle in the same coordinates; (x, y) is its lower left corner.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const Rect&) const = default;
};

} // namespace platform
