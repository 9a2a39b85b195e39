// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/BarTitle.h"
#include "design/ZOLThemePolicy.h"
#include "hints/CompanionPolicy.h"
#include "platform/Clock.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// A button of the settings.
struct SettingsButton {
    std::string identifier; ///< empty for none
    std::string title;
    std::string tip;
    int width = 0; ///< points
    bool active = false;
    bool enabled = true;
};

/// How the bar item looks, in a row that shows it.
struct BarPreview {
    bool mark = false;
    std::string title; ///< what the bar shows, without blanks at its ends
    std::string mode; ///< at the right end
    std::string accessibilityLabel;
};

/// The settings of the menu bar, from their values.
struct BarSettings {
    BarDisplayMode mode = BarDisplayMode::mark;
    const BarParts& parts;
    std::string_view title; ///< the bar's text
    std::string_view hotkeyLabel;
};

namespace SettingsText {

inline constexpr std::string_view readout = "make the menu bar yours";

[[nodiscard]] std::string barNote(std::string_view hotkeyLabel);
[[nodiscard]] std::array<SettingsButton, allBarDisplayModes.size()> barModes(const BarSettings& bar);
[[nodiscard]] BarPreview barPreview(const BarSettings& bar);
/// The question before the item leaves the bar, and its two answers: hide it, and keep it.
[[nodiscard]] std::string hiddenQuestion(std::string_view hotkeyLabel);
[[nodiscard]] std::array<SettingsButton, 2> hiddenAnswers(std::string_view hotkeyLabel);
[[nodiscard]] std::array<SettingsButton, allBarParts.size()> barParts(const BarSettings& bar);
[[nodiscard]] std::string carried(const BarSettings& bar);

inline constexpr std::string_view panelNote
    = "pin keeps the panel open on a click outside, off by default, the circle in the header. the theme "
      "turns the panel white or black, white by default, the switch in the footer.";
[[nodiscard]] SettingsButton pin(bool pinned);
[[nodiscard]] std::array<SettingsButton, ZOLThemePolicy::modes.size()> themes(ZOLThemePolicy::Mode mode);

/// The refresh profiles; the one of that native interval is active.
[[nodiscard]] std::array<SettingsButton, 3> refresh(platform::Seconds nativeInterval);
[[nodiscard]] std::string refreshNote(platform::Seconds nativeInterval, platform::Seconds panelInterval);
[[nodiscard]] SettingsButton motion(bool enabled);
[[nodiscard]] SettingsButton hints(bool enabled);
[[nodiscard]] SettingsButton preview();
inline constexpr std::string_view hintsNote
    = "hints need 20s of continuous os pressure, one per pressure episode, with a restart-safe 30m "
      "cooldown. 30m snoozes, inspect acknowledges the hint. macOS Reduce Motion is respected.";

/// One hint of the past.
struct HintRow {
    std::string at; ///< local time as "MMM d HH:mm"
    std::string state;

    bool operator==(const HintRow&) const = default;
};
/// The last five, newest first.
[[nodiscard]] std::vector<HintRow> hintHistory(const std::vector<CompanionPolicy::Receipt>& receipts);
inline constexpr std::string_view noHints = "empty · no automatic hints recorded";
inline constexpr std::string_view hintHistoryNote
    = "hint receipts describe display and acknowledgement only, workload actions have their own results";

[[nodiscard]] std::string footerTitle();
inline constexpr std::string_view footerNote
    = "readings stay on this Mac. a server task receives only the workspace and task text you submit. "
      "existing apps and sessions stay under your control.";

} // namespace SettingsText

} // namespace ostrel
