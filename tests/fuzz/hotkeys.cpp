// SPDX-License-Identifier: Apache-2.0
/// Stored hotkeys and the shortcut files of desktops: what is read of a hotkey can be stored again as the
/// same, and no file leads a parser out of its bounds.
#include "bar/DesktopShortcuts.h"
#include "bar/OstrelHotkey.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace ostrel;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto hotkey = OstrelHotkey::fromStorage(text)) {
        if (OstrelHotkey::fromStorage(hotkey->storage()) != hotkey)
            std::abort();
        (void)hotkey->display();
        (void)hotkey->conflict(FamilyHotkeys::holders(OstrelHotkey::owner, {}));
    }
    for (const auto parse : { DesktopShortcuts::xfce, DesktopShortcuts::openbox, DesktopShortcuts::plasma,
             DesktopShortcuts::lxqt })
        for (const DesktopShortcut& shortcut : parse(text))
            if (shortcut.key.empty())
                std::abort();
    return 0;
}
