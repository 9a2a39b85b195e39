// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"

#include <cstddef>
#include <optional>
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
