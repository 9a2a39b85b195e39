// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/OstrelHotkey.h"
#include "platform/HotKeyCenter.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

/// What the settings say of the hotkey, from plain values.
namespace ostrel::HotkeyText {

/// Why a combination isn't had, behind its label. `holder` names who has it where that is known.
[[nodiscard]] std::string refusal(
    const OstrelHotkey& hotkey, platform::HotKeyRefusal refusal, const std::optional<std::string>& holder);

inline constexpr std::string_view fieldTip
    = "press the field, then the combination · esc cancels · delete clears";
inline constexpr std::string_view defaultTitle = "default ⌥⌘m";
inline constexpr std::string_view defaultTip = "store ⌥⌘M again, the shipped combination";
inline constexpr std::string_view note
    = "a combination needs two modifiers and stays off the ones Pellam Dial, Tessit Loop, Vormel Trim and "
      "macOS already hold; a refusal prints here in red and is not stored.";

/// What the section is made of.
struct State {
    const OstrelHotkey& hotkey;
    bool cleared = false;
    bool recording = false;
    std::string error;
    platform::HotKeyStanding standing;
    bool unavailable = false; ///< the desktop gives programs no hotkeys
};

/// One of the combinations that are offered.
struct Choice {
    std::string identifier;
    std::string title;
    std::string tip;
    std::string accessibilityLabel;
    bool active = false;
};

/// The section below its heading.
struct Section {
    std::string field;
    std::string fieldLabel; ///< for assistive technology
    bool recording = false; ///< the field is active and the line red
    std::string line;
    std::string error; ///< empty: there is no such line
    std::array<Choice, 4> choices;
};

/// `holders` are those of this moment.
[[nodiscard]] Section section(const State& state, const FamilyHotkeys::Holders& holders);

} // namespace ostrel::HotkeyText
