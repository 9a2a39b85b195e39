// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/X11Struts.h"

#include "platform/qt/Xcb.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace platform {

namespace {

/// More than any desktop has windows.
constexpr std::uint32_t mostClients = 4096;
constexpr std::uint32_t strutFigures = 12;
constexpr std::uint8_t sentByOthers = 0x80;

/// A property's values of 32 bits. The caller keeps the reply.
std::span<const std::uint32_t> values(const xcb_get_property_reply_t* reply, xcb_atom_t type)
{
    if (!reply || reply->type != type || reply->format != 32)
        return {};
    return { static_cast<const std::uint32_t*>(xcb_get_property_value(reply)), reply->value_len };
}

XcbReply<xcb_get_property_reply_t> replyTo(xcb_connection_t* connection, xcb_get_property_cookie_t cookie)
{
    xcb_generic_error_t* error = nullptr; // the window may be gone; unasked for, the toolkit would print it
    XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, &error), &std::free);
    std::free(error);
    return reply;
}

} // namespace

X11Struts::X11Struts(xcb_connection_t* connection)
    : connection_(connection)
{
}

const std::vector<Strut>& X11Struts::all()
{
    if (!struts_)
        read();
    return *struts_;
}

QSize X11Struts::rootSize() const
{
    const XcbReply<xcb_get_geometry_reply_t> root(
        xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, rootWindow(connection_)), nullptr),
        &std::free);
    return root ? QSize(root->width, root->height) : QSize();
}

bool X11Struts::handle(const xcb_generic_event_t& event)
{
    if ((event.response_type & ~sentByOthers) != XCB_PROPERTY_NOTIFY || !struts_)
        return false;
    const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    const bool changed = change.window == rootWindow(connection_)
        ? change.atom == clientList_ || change.atom == workArea_
        : (change.atom == partial_ || change.atom == whole_) && bars_.contains(change.window);
    if (changed)
        struts_.reset();
    return changed;
}

std::vector<xcb_window_t> X11Struts::clients() const
{
    const auto list = replyTo(connection_,
        xcb_get_property(
            connection_, 0, rootWindow(connection_), clientList_, XCB_ATOM_WINDOW, 0, mostClients));
    const auto windows = values(list.get(), XCB_ATOM_WINDOW);
    return { windows.begin(), windows.end() };
}

void X11Struts::read()
{
    if (clientList_ == XCB_ATOM_NONE) {
        const auto atoms = internAtoms(
            connection_, { "_NET_CLIENT_LIST", "_NET_WORKAREA", "_NET_WM_STRUT", "_NET_WM_STRUT_PARTIAL" });
        clientList_ = atoms[0];
        workArea_ = atoms[1];
        whole_ = atoms[2];
        partial_ = atoms[3];
    }
    // Followed before it is read, so that no change falls in between.
    addToEventMask(connection_, rootWindow(connection_), XCB_EVENT_MASK_PROPERTY_CHANGE);
    struts_.emplace();
    const std::vector<xcb_window_t> windows = clients();
    std::vector<std::array<xcb_get_property_cookie_t, 2>> asked;
    asked.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        const auto ask = [&](xcb_atom_t name) {
            return xcb_get_property(connection_, 0, window, name, XCB_ATOM_CARDINAL, 0, strutFigures);
        };
        asked.push_back({ ask(partial_), ask(whole_) });
    }
    std::set<xcb_window_t> bars;
    for (std::size_t at = 0; at < windows.size(); ++at) {
        const auto partial = replyTo(connection_, asked[at][0]);
        const auto whole = replyTo(connection_, asked[at][1]);
        std::vector<Strut> kept = strutsFrom(values(partial.get(), XCB_ATOM_CARDINAL));
        if (!partial || partial->type == XCB_ATOM_NONE)
            kept = strutsFrom(values(whole.get(), XCB_ATOM_CARDINAL));
        const bool isBar
            = (partial && partial->type != XCB_ATOM_NONE) || (whole && whole->type != XCB_ATOM_NONE);
        if (!isBar)
            continue;
        bars.insert(windows[at]);
        if (!bars_.contains(windows[at]))
            addToEventMask(connection_, windows[at], XCB_EVENT_MASK_PROPERTY_CHANGE);
        struts_->insert(struts_->end(), kept.begin(), kept.end());
    }
    bars_ = std::move(bars);
}

} // namespace platform
