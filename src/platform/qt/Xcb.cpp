// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/Xcb.h"

namespace platform {

std::span<const std::uint32_t> figuresOf(const XcbReply<xcb_get_property_reply_t>& property)
{
    if (!property || property->format != 32)
        return {};
    return { static_cast<const std::uint32_t*>(xcb_get_property_value(property.get())), property->value_len };
}

std::vector<xcb_atom_t> internAtoms(
    xcb_connection_t* connection, std::initializer_list<std::string_view> names)
{
    std::vector<xcb_intern_atom_cookie_t> asked;
    for (const std::string_view name : names)
        asked.push_back(xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    std::vector<xcb_atom_t> atoms;
    for (const xcb_intern_atom_cookie_t cookie : asked) {
        const auto reply = answerTo(connection, cookie, xcb_intern_atom_reply);
        atoms.push_back(reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE));
    }
    return atoms;
}

EventMask addToEventMask(xcb_connection_t* connection, xcb_window_t window, std::uint32_t events)
{
    const auto present = answerTo(
        connection, xcb_get_window_attributes(connection, window), xcb_get_window_attributes_reply);
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

xcb_window_t selectionOwner(xcb_connection_t* connection, xcb_atom_t selection)
{
    const auto reply
        = answerTo(connection, xcb_get_selection_owner(connection, selection), xcb_get_selection_owner_reply);
    return reply ? reply->owner : static_cast<xcb_window_t>(XCB_NONE);
}

xcb_window_t rootWindow(xcb_connection_t* connection)
{
    const auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    return screens.rem > 0 ? screens.data->root : static_cast<xcb_window_t>(XCB_NONE);
}

} // namespace platform
