// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Screens.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

namespace ostrel::PanelScreen {

/// A display, as far as the choice needs it.
struct Display {
    platform::Rect frame; ///< all of it, in global coordinates
    platform::Rect visible; ///< what the desktop's bars leave free
};

/// At the top right corner of this free area.
struct Corner {
    platform::Rect visible;

    bool operator==(const Corner&) const = default;
};
/// From the bar item.
struct BarItem {
    bool operator==(const BarItem&) const = default;
};

/// Where the panel opens on its display.
using Anchor = std::variant<Corner, BarItem>;

/// The word for it in the record of the last opening.
[[nodiscard]] std::string_view name(const Anchor& anchor);

struct Choice {
    std::size_t index = 0; ///< of the display
    Anchor anchor;

    bool operator==(const Choice&) const = default;
};

/// Chooses the display: the pointer's, else the main one, else the one at the origin, else the first. The
/// panel hangs from the bar item only when that is on the same display. Nothing without a display.
[[nodiscard]] std::optional<Choice> choose(platform::Point pointer, const std::vector<Display>& displays,
    std::optional<std::size_t> mainIndex, std::optional<platform::Point> barItemCenter);

struct Place {
    platform::Screen screen;
    Anchor anchor;
};

/// The same for the displays and the pointer as they are now.
[[nodiscard]] std::optional<Place> current(
    const platform::Screens& screens, std::optional<platform::Point> barItemCenter);

/// Two points wide and high, right below the top of the area: a panel that hangs from it ends 24 points left
/// of the area's right edge. Without an area the main display's free one, and without any display a usual
/// one's.
[[nodiscard]] platform::Rect hiddenModeAnchor(
    const platform::Screens& screens, const std::optional<platform::Rect>& area);

/// The same near the lower right corner of the main display: a panel above it ends 24 points from both edges.
[[nodiscard]] platform::Rect testbedAnchor(const platform::Screens& screens);

} // namespace ostrel::PanelScreen
