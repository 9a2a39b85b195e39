// SPDX-License-Identifier: Apache-2.0
/// Stored hotkeys and the shortcut files of desktops: what is read of a hotkey can be stored again as the
/// same, and no file leads a parser out of its bounds.
#include "bar/DesktopShortcuts.h"
#include "bar/OstrelHotkey.h"

#include "fuzz/FuzzTarget.h"

using namespace ostrel;

void runOn(std::string_view text)
{
    if (const auto hotkey = OstrelHotkey::fromStorage(text)) {
        check(OstrelHotkey::fromStorage(hotkey->storage()) == hotkey);
        (void)hotkey->display();
        (void)hotkey->conflict(FamilyHotkeys::holders(OstrelHotkey::owner, {}));
    }
    for (const auto parse : { DesktopShortcuts::xfce, DesktopShortcuts::openbox, DesktopShortcuts::plasma,
             DesktopShortcuts::lxqt })
        for (const DesktopShortcut& shortcut : parse(text))
            check(!shortcut.key.empty());
}
