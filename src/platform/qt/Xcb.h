// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

#include <xcb/xcb.h>

namespace platform {

/// An answer of the display, which the caller frees; null when there is none.
template <typename Reply>
using XcbReply = std::unique_ptr<Reply, decltype(&std::free)>;

/// The display's numbers of the names, in their order and in one round trip; 0 for one that it didn't give.
[[nodiscard]] std::vector<xcb_atom_t> internAtoms(
    xcb_connection_t* connection, std::initializer_list<std::string_view> names);

enum class EventMask { noWindow, complete, added };

/// Has these events of a window sent to us too, beside those that this connection already gets: an own choice
/// would take the toolkit's away. Tells whether some were missing.
EventMask addToEventMask(xcb_connection_t* connection, xcb_window_t window, std::uint32_t events);

/// The root window of the display's first screen, the only one that today's desktops have.
[[nodiscard]] xcb_window_t rootWindow(xcb_connection_t* connection);

} // namespace platform
