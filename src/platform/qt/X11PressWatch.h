// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

#include <xcb/xcb.h>

namespace platform {

/// The mouse buttons going down anywhere on an X display, from the events of one connection, whoever holds
/// the pointer. Main thread.
class X11PressWatch {
public:
    /// Whether the display tells of presses on every other program: not on one inside a Wayland desktop, nor
    /// without the newer input extension. False without a connection. A few round trips.
    [[nodiscard]] static bool seesAll(xcb_connection_t* connection);

    /// On a display that sees all.
    explicit X11PressWatch(xcb_connection_t* connection);

    /// From now on, and no longer, the display sends the events. What the toolkit chose for itself stays.
    void start();
    void stop();

    /// Whether the event is the left or the right button going down on a window of another program, or on
    /// none. A few round trips for a press, none for others.
    [[nodiscard]] bool handle(const xcb_generic_event_t& event) const;

private:
    void select(std::uint32_t events);
    /// Whether the window that the pointer is in, or one around that, was made over this connection.
    [[nodiscard]] bool pointerIsOnOurs() const;

    xcb_connection_t* connection_;
    std::uint8_t extension_ = 0;
};

} // namespace platform
