// SPDX-License-Identifier: Apache-2.0
#include "panel/SettingsText.h"

#include "core/LocalTime.h"
#include "core/Text.h"
#include "core/Version.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include <fmt/format.h>

namespace ostrel::SettingsText {

namespace {

constexpr std::size_t mostHints = 5;

struct Profile {
    std::string_view word;
    int native; ///< seconds
    int panel;
};

constexpr std::array<Profile, 3> profiles { { { "fast", 3, 8 }, { "normal", 5, 15 }, { "calm", 10, 30 } } };

std::string_view onOff(bool on) { return on ? "on" : "off"; }

std::string previewState(BarDisplayMode mode, std::string_view title)
{
    switch (mode) {
    case BarDisplayMode::mark:
        return "the mark alone";
    case BarDisplayMode::markValue:
        return fmt::format("the mark and {}", title);
    case BarDisplayMode::value:
        return std::string(title);
    case BarDisplayMode::hidden:
        break;
    }
    return "no item in the bar";
}

std::string localMinute(const CompanionPolicy::Date& date)
{
    // What is stored may name any moment; the machine's own clock reaches less far.
    constexpr double farthest = 9e9; // seconds
    const double seconds = date.time_since_epoch().count();
    if (!(std::abs(seconds) < farthest))
        return "--";
    return localMinuteText(std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(date.time_since_epoch())));
}

} // namespace

std::string barNote(std::string_view hotkeyLabel)
{
    return fmt::format(
        "the mark is in the bar by default. `mark + value` adds cpu and swap, `value` drops the mark, "
        "`hidden` takes the item out of the bar and leaves {} as the way back.",
        hotkeyLabel);
}

std::array<SettingsButton, allBarDisplayModes.size()> barModes(const BarSettings& bar)
{
    std::array<SettingsButton, allBarDisplayModes.size()> buttons;
    for (std::size_t at = 0; at < buttons.size(); ++at) {
        const BarDisplayMode mode = allBarDisplayModes[at];
        const std::string word(rawValue(mode));
        buttons[at] = { .identifier = word,
            .title = word,
            .tip = mode == BarDisplayMode::hidden ? fmt::format(
                       "take the item out of the bar; asks first, {} stays the way back", bar.hotkeyLabel)
                                                  : fmt::format("draw the bar item as {}", word),
            .width = 104,
            .active = mode == bar.mode };
    }
    return buttons;
}

BarPreview barPreview(const BarSettings& bar)
{
    const std::string title(trimmed(bar.title));
    const std::string_view label = rawValue(bar.mode);
    return { .mark = showsMark(bar.mode),
        .title = title,
        .mode = bar.mode == BarDisplayMode::hidden ? "hidden · no item in the bar"
                                                   : fmt::format("menu bar · {}", label),
        .accessibilityLabel
        = fmt::format("menu bar preview · {} · {}", label, previewState(bar.mode, title)) };
}

std::string hiddenQuestion(std::string_view hotkeyLabel)
{
    return fmt::format("hidden removes OSTREL from the menu bar. {} still opens the panel, and settings "
                       "bring the mark back.",
        hotkeyLabel);
}

std::array<SettingsButton, 2> hiddenAnswers(std::string_view hotkeyLabel)
{
    return { { { .identifier = "confirm-hidden",
                   .title = "confirm hidden",
                   .tip = fmt::format(
                       "store hidden: the item leaves the bar, {} still opens the panel", hotkeyLabel),
                   .width = 150 },
        { .identifier = {},
            .title = "keep the mark",
            .tip = "keep the mark in the bar and drop the hidden choice",
            .width = 150 } } };
}

std::array<SettingsButton, allBarParts.size()> barParts(const BarSettings& bar)
{
    std::array<SettingsButton, allBarParts.size()> buttons;
    for (std::size_t at = 0; at < buttons.size(); ++at) {
        const std::string word(rawValue(allBarParts[at]));
        buttons[at] = { .identifier = word,
            .title = word,
            .tip = fmt::format("add or remove {} in the value the bar draws", word),
            .width = 92,
            .active = bar.parts.contains(word),
            .enabled = showsValue(bar.mode) };
    }
    return buttons;
}

std::string carried(const BarSettings& bar)
{
    if (!showsValue(bar.mode))
        return "the parts belong to `mark + value` and `value`; this mode draws no value.";
    std::vector<std::string> words;
    for (const BarPart part : allBarParts)
        if (bar.parts.contains(rawValue(part)))
            words.emplace_back(rawValue(part));
    return "the value carries: " + joined(words, " + ");
}

SettingsButton pin(bool pinned)
{
    return { .identifier = {},
        .title = pinned ? "unpin panel" : "keep panel open",
        .tip = "the same switch as the circle in the header; stored as dev.quent.ostrel.pinned",
        .width = 186,
        .active = pinned };
}

std::array<SettingsButton, ZOLThemePolicy::modes.size()> themes(ZOLThemePolicy::Mode mode)
{
    std::array<SettingsButton, ZOLThemePolicy::modes.size()> buttons;
    for (std::size_t at = 0; at < buttons.size(); ++at) {
        const ZOLThemePolicy::Mode theme = ZOLThemePolicy::modes[at];
        const std::string word = theme == ZOLThemePolicy::Mode::dark ? "black" : "white";
        buttons[at] = { .identifier = fmt::format("theme-{}", ZOLThemePolicy::rawValue(theme)),
            .title = word,
            .tip = fmt::format("turn the panel {}; stored as dev.quent.ostrel.theme", word),
            .width = 96,
            .active = theme == mode };
    }
    return buttons;
}

std::array<SettingsButton, 3> refresh(platform::Seconds nativeInterval)
{
    std::array<SettingsButton, 3> buttons;
    for (std::size_t at = 0; at < buttons.size(); ++at) {
        const auto& [word, native, panel] = profiles[at];
        buttons[at] = { .identifier = std::string(word),
            .title = std::string(word),
            .tip
            = fmt::format("native readings every {}s, process details every {}s while open", native, panel),
            .width = 112,
            .active = nativeInterval == platform::Seconds(native) };
    }
    return buttons;
}

std::string refreshNote(platform::Seconds nativeInterval, platform::Seconds panelInterval)
{
    const auto whole = [](platform::Seconds seconds) { return static_cast<std::int64_t>(seconds.count()); };
    return fmt::format(
        "native readings every {}s · process details every {}s while open · server checks run on demand",
        whole(nativeInterval), whole(panelInterval));
}

SettingsButton motion(bool enabled)
{
    return { .identifier = {},
        .title = fmt::format("voxel motion · {}", onOff(enabled)),
        .tip = "the character assembles on open and answers a click; macOS reduce motion still wins",
        .width = 186,
        .active = enabled };
}

SettingsButton hints(bool enabled)
{
    return { .identifier = {},
        .title = fmt::format("pressure hints · {}", onOff(enabled)),
        .tip = "a hint card near the menu bar after 20s of os pressure, one per episode",
        .width = 206,
        .active = enabled };
}

SettingsButton preview()
{
    return { .identifier = {},
        .title = "preview companion",
        .tip = "show a sample hint card now; it is not recorded as a real hint",
        .width = 170 };
}

std::vector<HintRow> hintHistory(const std::vector<CompanionPolicy::Receipt>& receipts)
{
    std::vector<HintRow> rows;
    const std::size_t count = std::min(receipts.size(), mostHints);
    for (std::size_t back = 1; back <= count; ++back) {
        const CompanionPolicy::Receipt& receipt = receipts[receipts.size() - back];
        rows.push_back({ localMinute(receipt.at), receipt.state });
    }
    return rows;
}

std::string footerTitle() { return fmt::format("OSTREL {} · native instrument", appVersion); }

} // namespace ostrel::SettingsText
