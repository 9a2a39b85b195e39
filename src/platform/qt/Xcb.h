// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include <xcb/xcb.h>

namespace platform {

/// An answer of the display, which the caller frees; null when there is none.
template <typename Reply>
using XcbReply = std::unique_ptr<Reply, decltype(&std::free)>;

/// Waits for the answer to a question; `take` is the question's own function for that. Null for an error, as
/// when a window has gone: left alone, the toolkit would print it.
template <typename Reply, typename Cookie>
[[nodiscard]] XcbReply<Reply> answerTo(xcb_connection_t* connection, Cookie asked,
    Reply* (*take)(xcb_connection_t*, Cookie, xcb_generic_error_t**))
{
    xcb_generic_error_t* error = nullptr;
    XcbReply<Reply> reply(take(connection, asked, &error), &std::free);
    std::free(error);
    return reply;
}

/// A property's values of 32 bits; none when it has others. The caller keeps the reply.
[[nodiscard]] std::span<const std::uint32_t> figuresOf(const XcbReply<xcb_get_property_reply_t>& property);

/// What kind of event it is, whether the display made it or another program.
[[nodiscard]] inline std::uint8_t kindOf(const xcb_generic_event_t& event)
{
    constexpr std::uint8_t madeByOthers = 0x80;
    return static_cast<std::uint8_t>(event.response_type & ~madeByOthers);
}

/// An event as the kind that it is.
template <typename Event>
[[nodiscard]] const Event& as(const xcb_generic_event_t& event)
{
    return reinterpret_cast<const Event&>(event);
}

/// The display's numbers of the names, in their order and in one round trip; 0 for one that it didn't give.
[[nodiscard]] std::vector<xcb_atom_t> internAtoms(
    xcb_connection_t* connection, std::initializer_list<std::string_view> names);

enum class EventMask { noWindow, complete, added };

/// Has these events of a window sent to us too, beside those that this connection already gets: an own choice
/// would take the toolkit's away. Tells whether some were missing.
EventMask addToEventMask(xcb_connection_t* connection, xcb_window_t window, std::uint32_t events);

/// The window that has the selection; none without one.
[[nodiscard]] xcb_window_t selectionOwner(xcb_connection_t* connection, xcb_atom_t selection);

/// The root window of the display's first screen, the only one that today's desktops have.
[[nodiscard]] xcb_window_t rootWindow(xcb_connection_t* connection);

} // namespace platform
