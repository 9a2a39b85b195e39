// SPDX-License-Identifier: Apache-2.0
#include "bar/HotkeyText.h"

#include <cstddef>

#include <fmt/format.h>

namespace ostrel::HotkeyText {

namespace {

std::string why(platform::HotKeyRefusal refusal, const std::optional<std::string>& holder)
{
    switch (refusal) {
    case platform::HotKeyRefusal::declined:
        return "refused by the desktop";
    case platform::HotKeyRefusal::unavailable:
        return "this desktop gives programs no hotkeys";
    case platform::HotKeyRefusal::held:
        break;
    }
    return holder ? "taken by " + *holder : "held by another app";
}

/// Which key opens the panel, in the words of whoever decides on it.
std::string line(const State& state)
{
    using Kind = platform::HotKeyStanding::Kind;
    if (state.recording)
        return "recording · esc cancels · delete clears";
    if (state.cleared)
        return "panel: none · the bar item and the routes stay the way in";
    if (state.unavailable)
        return "panel: none here · a shortcut of the desktop's own can call ostrel ostrel://toggle";
    if (state.standing.kind == Kind::asked)
        return fmt::format("panel: {} is asked for · the desktop has yet to say", state.hotkey.display());
    if (state.standing.kind == Kind::bound && state.standing.name.empty())
        return "panel: no key yet · the desktop's own settings give it one";
    const bool chosenByDesktop = state.standing.kind == Kind::bound;
    return fmt::format("panel: {} · opens and closes from anywhere",
        chosenByDesktop ? state.standing.name : state.hotkey.display());
}

Choice choice(std::size_t at, const State& state, const FamilyHotkeys::Holders& holders)
{
    const OstrelHotkey& hotkey = OstrelHotkey::canonical()[at];
    const std::string display = hotkey.display();
    return { .identifier = fmt::format("hotkey-choice-{}", at),
        .title = display,
        .tip = hotkey.conflict(holders).value_or("take this combination"),
        .accessibilityLabel = fmt::format("hotkey choice · {}", display),
        .active = !state.cleared && hotkey == state.hotkey };
}

} // namespace

std::string refusal(
    const OstrelHotkey& hotkey, platform::HotKeyRefusal refusal, const std::optional<std::string>& holder)
{
    return fmt::format("{}: {}", hotkey.display(), why(refusal, holder));
}

Section section(const State& state, const FamilyHotkeys::Holders& holders)
{
    const std::string label = state.cleared ? "none" : state.hotkey.display();
    Section section { .field = state.recording ? "press a combination" : label,
        .fieldLabel = state.recording
            ? "hotkey field · recording · press a combination, esc cancels, delete clears"
            : fmt::format("hotkey field · {} · press to record", label),
        .recording = state.recording,
        .line = line(state),
        .error = state.error,
        .choices = {} };
    for (std::size_t at = 0; at < section.choices.size(); ++at)
        section.choices[at] = choice(at, state, holders);
    return section;
}

} // namespace ostrel::HotkeyText
