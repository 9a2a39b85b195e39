// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/OstrelHotkey.h"
#include "core/LifeToken.h"
#include "core/PanelDoor.h"
#include "platform/HotKeyCenter.h"

#include <functional>
#include <string>

namespace ostrel {

/// The hotkey's registration with the desktop. Main thread.
class HotkeyMonitor {
public:
    /// What the desktop says later.
    struct News {
        std::function<void(platform::HotKeyRefusal)> refused;
        std::function<void()> changed; ///< how the registration stands
    };

    /// `center` must outlive the monitor.
    explicit HotkeyMonitor(platform::HotKeyCenter& center);

    /// From now on a press opens the panel or closes it. The door must outlive the monitor.
    void start(PanelDoor& delegate, News news);
    /// Takes a combination in place of the one before; whether it is had, or was asked for.
    [[nodiscard]] bool registerHotkey(const OstrelHotkey& hotkey);
    void unregister();

    /// Why the last registration failed.
    [[nodiscard]] platform::HotKeyRefusal refusal() const { return center_.refusal(); }
    [[nodiscard]] platform::HotKeyStanding standing() const { return center_.standing(); }
    [[nodiscard]] std::string desktop() const { return center_.desktop(); }

private:
    platform::HotKeyCenter& center_;
    LifeToken life_;
};

} // namespace ostrel
