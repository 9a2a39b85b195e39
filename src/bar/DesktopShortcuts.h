// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/OstrelHotkey.h"
#include "platform/FileManager.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// A key combination of the desktop's own, as its settings have it.
struct DesktopShortcut {
    std::uint64_t modifiers = 0; ///< in the encoding of key events
    std::string key; ///< named as a hotkey's is
    std::string action; ///< what it does, in the settings' words

    bool operator==(const DesktopShortcut&) const = default;
};

/// The settings files of desktops whose form is known. Each parser takes any bytes and leaves out what it
/// can't read.
namespace DesktopShortcuts {

/// xfce4-keyboard-shortcuts.xml
[[nodiscard]] std::vector<DesktopShortcut> xfce(std::string_view text);
/// Openbox's rc.xml
[[nodiscard]] std::vector<DesktopShortcut> openbox(std::string_view text);
/// Plasma's kglobalshortcutsrc
[[nodiscard]] std::vector<DesktopShortcut> plasma(std::string_view text);
/// LXQt's globalkeyshortcuts.conf
[[nodiscard]] std::vector<DesktopShortcut> lxqt(std::string_view text);

/// Who has the combination by the settings of the running desktop: "{desktop} · {action}"; nothing where they
/// don't tell. `desktop` names it and its window manager, parted by colons. It reads small
/// files and waits for nothing, but settings may lie about of a desktop that doesn't run: ask only when the
/// combination was refused.
[[nodiscard]] std::optional<std::string> holder(
    const platform::FileManager& files, std::string_view desktop, const OstrelHotkey& hotkey);

} // namespace DesktopShortcuts

} // namespace ostrel
