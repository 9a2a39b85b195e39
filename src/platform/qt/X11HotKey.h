// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/HotKeyCenter.h"

#include <cstdint>
#include <optional>

#include <xcb/xcb.h>

namespace platform {

/// One key combination of an X display, whatever program has the keyboard. The display refuses one that
/// another program has. Main thread.
class X11HotKey {
public:
    enum class Event { other, pressed, keyboardChanged };

    /// The connection outlives this; at its end the display lets go of what was grabbed.
    explicit X11HotKey(xcb_connection_t* connection);

    /// Takes a combination in place of the one before. Some round trips. False when the display has no such
    /// key, or refuses it.
    [[nodiscard]] bool grab(const HotKey& hotKey);
    void release();
    [[nodiscard]] bool isHeld() const { return held_.has_value(); }

    /// What an event of the connection is. A key that stays down is pressed once.
    [[nodiscard]] Event handle(const xcb_generic_event_t& event);
    /// After a change of the keyboard: follows the modifiers to where they are now. False when the display
    /// refuses that, and then nothing is held.
    [[nodiscard]] bool follow();

private:
    /// The bits of a key event's state.
    struct Modifiers {
        std::uint16_t option = 0;
        std::uint16_t command = 0;
        std::uint16_t locks = 0; ///< those of caps, num and scroll lock, which don't count

        bool operator==(const Modifiers&) const = default;
    };

    [[nodiscard]] Modifiers readModifiers() const;
    [[nodiscard]] bool grabAll();
    [[nodiscard]] bool isRepeat(const xcb_key_press_event_t& press) const;

    xcb_connection_t* connection_;
    xcb_window_t root_;
    std::uint8_t keyboardEvents_ = 0; ///< of the keyboard extension; 0 without it
    std::optional<HotKey> held_;
    std::uint8_t key_ = 0; ///< of what is held
    Modifiers modifiers_;
    bool down_ = false;
    xcb_timestamp_t pressedAt_ = 0; ///< last, by itself or by repeating
    std::optional<xcb_timestamp_t> releasedAt_;
};

} // namespace platform
