// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace platform {

/// One display.
struct Screen {
    std::string name; ///< as the desktop calls it
    Rect frame; ///< all of it, in global coordinates
    Rect visible; ///< what the desktop's bars leave free

    bool operator==(const Screen&) const = default;
};

/// The display that the middle of the rectangle is on, or the one nearest to it; nothing when there is none.
[[nodiscard]] inline std::optional<std::size_t> displayOf(const Rect& rect, std::span<const Screen> displays)
{
    const double x = rect.x + rect.width / 2, y = rect.y + rect.height / 2;
    std::optional<std::size_t> nearest;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t at = 0; at < displays.size(); ++at) {
        const Rect& frame = displays[at].frame;
        const double distance = std::hypot(x - std::clamp(x, frame.x, frame.x + frame.width),
            y - std::clamp(y, frame.y, frame.y + frame.height));
        if (distance < least) {
            least = distance;
            nearest = at;
        }
    }
    return nearest;
}

/// The displays as they are at this moment. Main thread.
class Screens {
public:
    virtual ~Screens() = default;

    /// Empty without a display.
    [[nodiscard]] virtual std::vector<Screen> all() const = 0;
    /// The place of the primary display among them; nothing without one.
    [[nodiscard]] virtual std::optional<std::size_t> mainIndex() const = 0;
    /// Where the mouse is, in global coordinates.
    [[nodiscard]] virtual Point pointer() const = 0;
};

} // namespace platform
