// SPDX-License-Identifier: Apache-2.0
#include "bar/HotkeyMonitor.h"

#include <utility>

namespace ostrel {

HotkeyMonitor::HotkeyMonitor(platform::HotKeyCenter& center)
    : center_(center)
{
}

void HotkeyMonitor::start(PanelDoor& delegate, News news)
{
    center_.connect({ .pressed = life_.guard([&delegate] { delegate.toggle(); }),
        .refused = life_.guard(std::move(news.refused)),
        .changed = life_.guard(std::move(news.changed)) });
}

bool HotkeyMonitor::registerHotkey(const OstrelHotkey& hotkey)
{
    return center_.registerHotKey({ hotkey.keyCode, hotkey.modifiers, hotkey.character });
}

void HotkeyMonitor::unregister() { center_.unregisterHotKey(); }

} // namespace ostrel
