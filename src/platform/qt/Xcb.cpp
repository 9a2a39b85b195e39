// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/Xcb.h"

namespace platform {

std::vector<xcb_atom_t> internAtoms(
    xcb_connection_t* connection, std::initializer_list<std::string_view> names)
{
    std::vector<xcb_intern_atom_cookie_t> asked;
    for (const std::string_view name : names)
        asked.push_back(xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    std::vector<xcb_atom_t> atoms;
    for (const xcb_intern_atom_cookie_t cookie : asked) {
        const XcbReply<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
        atoms.push_back(reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE));
    }
    return atoms;
}

EventMask addToEventMask(xcb_connection_t* connection, xcb_window_t window, std::uint32_t events)
{
    xcb_generic_error_t* error = nullptr;
    const XcbReply<xcb_get_window_attributes_reply_t> present(
        xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window), &error),
        &std::free);
    std::free(error);
    if (!present)
        return EventMask::noWindow;
    const std::uint32_t mask = present->your_event_mask | events;
    if (mask == present->your_event_mask)
        return EventMask::complete;
    // The window may be gone by now; the toolkit would print the error of an unchecked request.
    const auto cookie = xcb_change_window_attributes_checked(connection, window, XCB_CW_EVENT_MASK, &mask);
    xcb_discard_reply(connection, cookie.sequence);
    xcb_flush(connection);
    return EventMask::added;
}

xcb_window_t rootWindow(xcb_connection_t* connection)
{
    const auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    return screens.rem > 0 ? screens.data->root : static_cast<xcb_window_t>(XCB_NONE);
}

} // namespace platform
