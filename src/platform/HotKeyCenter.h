// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/KeyEvents.h"
#include "platform/MainQueue.h"

#include <cstdint>
#include <functional>
#include <string>

namespace platform {

/// A key combination that is to reach the program from every other one.
struct HotKey {
    std::uint32_t keyCode = 0; ///< virtual key code
    std::uint64_t modifierFlags = 0; ///< see ModifierFlag
    std::string character; ///< the key's name, for desktops that know keys by what they type

    bool operator==(const HotKey&) const = default;
};

/// How a registration stands.
struct HotKeyStanding {
    enum class Kind {
        none, ///< nothing is registered
        held, ///< the combination as it was asked for
        asked, ///< the desktop has yet to say which key it is to be
        bound, ///< the desktop chose
    };

    Kind kind = Kind::none;
    std::string name = {}; ///< bound: the key in the desktop's words; empty while it has given none

    bool operator==(const HotKeyStanding&) const = default;
};

/// Why a combination isn't had.
enum class HotKeyRefusal {
    held, ///< another program has it
    declined, ///< the user or the desktop said no
    unavailable, ///< there is nobody to ask on this desktop
};

/// Registers one key combination with the desktop. Main thread.
class HotKeyCenter {
public:
    struct Events {
        Job pressed;
        /// What was registered isn't had after all.
        std::function<void(HotKeyRefusal)> refused;
        /// `standing` has changed by itself.
        Job changed;
    };

    virtual ~HotKeyCenter() = default;

    /// Whom presses and later news reach, in turns of their own of the loop. Each must be there.
    virtual void connect(Events events) = 0;
    /// Asks for a combination in place of the one before. True when it is had, or when the desktop was asked,
    /// which may take its time and may say no. Waits for an X display alone.
    [[nodiscard]] virtual bool registerHotKey(const HotKey& hotKey) = 0;
    virtual void unregisterHotKey() = 0;
    /// Why the last registration failed.
    [[nodiscard]] virtual HotKeyRefusal refusal() const = 0;
    [[nodiscard]] virtual HotKeyStanding standing() const = 0;
    /// The names that the running desktop and its window manager give themselves, parted by colons; empty
    /// where they give none.
    [[nodiscard]] virtual std::string desktop() const = 0;
};

} // namespace platform
