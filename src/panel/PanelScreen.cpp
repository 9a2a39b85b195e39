// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelScreen.h"

#include "panel/PanelSize.h"

#include <algorithm>
#include <cmath>

namespace ostrel::PanelScreen {

namespace {

/// Between the panel and the edges of the free area.
constexpr double edgeGap = 24;
/// The anchor's width and height.
constexpr double anchorSize = 2;
/// The free area of a machine without a display.
constexpr platform::Rect usualArea { 0, 0, 1440, 900 };

/// A pointer on the left or the upper edge is inside, one on the right or the lower edge isn't: so exactly
/// one of two displays that touch has it.
bool holds(const platform::Rect& rect, const platform::Point& point)
{
    return point.x >= rect.x && point.x < rect.x + rect.width && point.y > rect.y
        && point.y <= rect.y + rect.height;
}

bool isPrimary(const Display& display)
{
    return std::abs(display.frame.x) < 1 && std::abs(display.frame.y) < 1;
}

std::size_t displayOf(
    platform::Point pointer, const std::vector<Display>& displays, std::optional<std::size_t> mainIndex)
{
    const auto place = [&](auto found) { return static_cast<std::size_t>(found - displays.begin()); };
    const auto pointed
        = std::ranges::find_if(displays, [&](const Display& one) { return holds(one.frame, pointer); });
    if (pointed != displays.end())
        return place(pointed);
    if (mainIndex && *mainIndex < displays.size())
        return *mainIndex;
    const auto primary = std::ranges::find_if(displays, isPrimary);
    return primary != displays.end() ? place(primary) : 0;
}

platform::Rect mainArea(const platform::Screens& screens)
{
    const auto all = screens.all();
    if (all.empty())
        return usualArea;
    const auto main = screens.mainIndex();
    return all[main && *main < all.size() ? *main : 0].visible;
}

/// Where an anchor stands so that a panel centred on it ends the gap left of the area's right edge.
double anchorLeft(const platform::Rect& area)
{
    return area.x + area.width - edgeGap - panelWidth / 2.0 - anchorSize / 2;
}

} // namespace

std::string_view name(const Anchor& anchor)
{
    return std::holds_alternative<BarItem>(anchor) ? "bar item" : "corner";
}

std::optional<Choice> choose(platform::Point pointer, const std::vector<Display>& displays,
    std::optional<std::size_t> mainIndex, std::optional<platform::Point> barItemCenter)
{
    if (displays.empty())
        return std::nullopt;
    const std::size_t index = displayOf(pointer, displays, mainIndex);
    if (barItemCenter && holds(displays[index].frame, *barItemCenter))
        return Choice { index, BarItem {} };
    return Choice { index, Corner { displays[index].visible } };
}

std::optional<Place> current(const platform::Screens& screens, std::optional<platform::Point> barItemCenter)
{
    const auto all = screens.all();
    std::vector<Display> displays;
    displays.reserve(all.size());
    for (const platform::Screen& screen : all)
        displays.push_back({ screen.frame, screen.visible });
    const auto choice = choose(screens.pointer(), displays, screens.mainIndex(), barItemCenter);
    if (!choice)
        return std::nullopt;
    return Place { all[choice->index], choice->anchor };
}

platform::Rect hiddenModeAnchor(const platform::Screens& screens, const std::optional<platform::Rect>& area)
{
    const platform::Rect free = area ? *area : mainArea(screens);
    return { anchorLeft(free), free.y + free.height - anchorSize, anchorSize, anchorSize };
}

platform::Rect testbedAnchor(const platform::Screens& screens)
{
    const platform::Rect free = mainArea(screens);
    return { anchorLeft(free), free.y + edgeGap - anchorSize, anchorSize, anchorSize };
}

} // namespace ostrel::PanelScreen
