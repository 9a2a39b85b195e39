// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <xcb/xcb.h>

namespace platform {

/// Whether windows are put together by a compositor, so that they may be translucent. One round trip.
[[nodiscard]] bool hasCompositor(xcb_connection_t* connection);

/// Whether the display is one inside a Wayland desktop, which shows us the other X programs only. One round
/// trip.
[[nodiscard]] bool isXwayland(xcb_connection_t* connection);

/// Whether the desktop is a Wayland one, with or without an X display inside: what the display says, or
/// without one the environment.
[[nodiscard]] bool isWaylandDesktop(xcb_connection_t* connection);

/// What the window manager calls itself; empty without one that says. A few round trips.
[[nodiscard]] std::string windowManagerName(xcb_connection_t* connection);

} // namespace platform
