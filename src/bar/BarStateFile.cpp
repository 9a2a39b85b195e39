// SPDX-License-Identifier: Apache-2.0
#include "bar/BarStateFile.h"

#include "core/Iso8601.h"
#include "core/Json.h"
#include "core/Text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::size_t longestState = 65536;

/// Less is no bar but the rounding of a scaled display, in points.
constexpr double thinnestBar = 0.5;
/// Where the desktop doesn't tell its bars.
constexpr double usualBar = 32;
/// By how much an item may stand over its bar at either side, in points.
constexpr double slack = 1;

/// From the lower to the upper end, in points.
struct Span {
    double low;
    double high;
};

Span across(const platform::Rect& rect) { return { rect.x, rect.x + rect.width }; }

Span upward(const platform::Rect& rect) { return { rect.y, rect.y + rect.height }; }

bool within(const Span& inner, const Span& outer, double over)
{
    return inner.low >= outer.low - over && inner.high <= outer.high + over;
}

/// The room that is kept for bars at the lower and at the upper end of a display.
struct Reserved {
    double low;
    double high;

    Reserved(const Span& frame, const Span& visible)
        : low(visible.low - frame.low)
        , high(frame.high - visible.high)
    {
    }

    [[nodiscard]] bool any() const { return low >= thinnestBar || high >= thinnestBar; }
    /// Whether the item lies in the bar at one of the two ends.
    [[nodiscard]] bool holds(const Span& item, const Span& frame) const
    {
        return (low >= thinnestBar && within(item, { frame.low, frame.low + low }, slack))
            || (high >= thinnestBar && within(item, { frame.high - high, frame.high }, slack));
    }
};

const platform::Screen& screenOf(const platform::Rect& rect, const std::vector<platform::Screen>& screens)
{
    const double x = rect.x + rect.width / 2;
    const double y = rect.y + rect.height / 2;
    const auto holds = [&](const platform::Screen& screen) {
        const Span columns = across(screen.frame);
        const Span rows = upward(screen.frame);
        return x >= columns.low && x < columns.high && y >= rows.low && y < rows.high;
    };
    const auto found = std::ranges::find_if(screens, holds);
    return found == screens.end() ? screens.front() : *found;
}

/// Cut toward zero; 0 for what no integer can tell.
std::int64_t cut(double value)
{
    constexpr double limit = 1e15;
    return std::abs(value) < limit ? static_cast<std::int64_t>(value) : 0;
}

std::string frameText(const std::optional<platform::StatusItemPlacement>& placement)
{
    if (!placement)
        return "null";
    const platform::Rect& frame = placement->frame;
    return fmt::format("[{}, {}, {}, {}]", cut(frame.x), cut(frame.y), cut(frame.width), cut(frame.height));
}

} // namespace

bool looksPainted(
    const platform::StatusItemPlacement& placement, const std::vector<platform::Screen>& screens)
{
    if (!placement.seen || !(placement.frame.width > 0) || screens.empty())
        return false;
    const platform::Screen& screen = screenOf(placement.frame, screens);
    const Span columns = across(screen.frame);
    const Span rows = upward(screen.frame);
    Reserved sides(columns, across(screen.visible));
    Reserved ends(rows, upward(screen.visible));
    if (!sides.any() && !ends.any())
        sides.low = sides.high = ends.low = ends.high = usualBar;
    const Span itemColumns = across(placement.frame);
    const Span itemRows = upward(placement.frame);
    return (ends.holds(itemRows, rows) && within(itemColumns, columns, 0))
        || (sides.holds(itemColumns, columns) && within(itemRows, rows, 0));
}

BarStateFile::BarStateFile(const Owner& owner)
    : owner_(owner)
{
}

void BarStateFile::connect(std::function<BarItemState()> item) { item_ = std::move(item); }

void BarStateFile::setLastPanelScreen(std::string text) { lastPanelScreen_ = std::move(text); }

void BarStateFile::writeBarState()
{
    if (!item_)
        return;
    if (path_.empty())
        path_ = barStateFile(owner_.files);
    std::string state = stateText();
    if (state == lastBarState_ && owner_.files.fileExists(path_))
        return;
    lastBarState_ = std::move(state);
    owner_.files.createDirectories(platform::parentDirectory(path_));
    owner_.files.replace(
        path_, fmt::format("{}, \"stamp\": \"{}\" }}\n", lastBarState_, iso8601(owner_.clock.now())));
}

std::string BarStateFile::stateText() const
{
    static const std::string positionKey = "NSStatusItem Preferred Position " + std::string(barAutosaveName);
    const BarItemState item = item_();
    const std::vector<platform::Screen> screens = owner_.screens.all();
    const auto main = owner_.screens.mainIndex();
    const auto preferred = owner_.defaults.number(positionKey);
    std::string panelScreen = lastPanelScreen_;
    std::ranges::replace(panelScreen, '"', '\'');
    return fmt::format(R"({{ "autosave": "{}", "mode": "{}", "isVisible": {}, "hasWindow": {}, "frame": {}, )"
                       R"("looksPainted": {}, "panelScreen": {}, "preferredPosition": {}, )"
                       R"("screenWidth": {}, "length": {})",
        barAutosaveName, rawValue(item.mode), item.mode != BarDisplayMode::hidden, item.placement.has_value(),
        frameText(item.placement), item.placement && looksPainted(*item.placement, screens),
        json::dump(panelScreen), preferred ? fmt::format("{}", cut(*preferred)) : "null",
        main && *main < screens.size() ? cut(screens[*main].frame.width) : 0, cut(item.length));
}

std::string barStateFile(const platform::FileManager& files)
{
    return files.homeDirectory() + "/.config/zol-mini-apps/ostrel-bar-state.json";
}

std::optional<std::string> readBarState(const platform::FileManager& files)
{
    const auto text = files.read(barStateFile(files), longestState);
    if (!text)
        return std::nullopt;
    return std::string(trimmed(*text));
}

} // namespace ostrel
