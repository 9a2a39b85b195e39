// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/X11Struts.h"

#include "platform/qt/Xcb.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace platform {

namespace {

/// More than any desktop has windows.
constexpr std::uint32_t mostClients = 4096;
constexpr std::uint32_t strutFigures = 12;

} // namespace

X11Struts::X11Struts(xcb_connection_t* connection)
    : connection_(connection)
{
}

const StrutLayout& X11Struts::layout()
{
    if (!connection_) {
        connection_ = toolkitXConnection();
        if (connection_)
            filter_.emplace([this](const xcb_generic_event_t& event) { handle(event); });
    }
    if (connection_ && !std::exchange(fresh_, true))
        read();
    return layout_;
}

bool X11Struts::handle(const xcb_generic_event_t& event)
{
    if (!fresh_)
        return false;
    bool changed = false;
    switch (kindOf(event)) {
    case XCB_CONFIGURE_NOTIFY:
        changed = as<xcb_configure_notify_event_t>(event).window == rootWindow(connection_);
        break;
    case XCB_PROPERTY_NOTIFY: {
        const auto& change = as<xcb_property_notify_event_t>(event);
        changed = change.window == rootWindow(connection_)
            ? change.atom == clientList_ || change.atom == workArea_
            : (change.atom == partial_ || change.atom == whole_) && bars_.contains(change.window);
        break;
    }
    default:
        break;
    }
    fresh_ = !changed;
    return changed;
}

std::vector<xcb_window_t> X11Struts::clients() const
{
    const auto list = answerTo(connection_,
        xcb_get_property(
            connection_, 0, rootWindow(connection_), clientList_, XCB_ATOM_WINDOW, 0, mostClients),
        xcb_get_property_reply);
    const auto windows = figuresOf(list);
    return { windows.begin(), windows.end() };
}

void X11Struts::read()
{
    const xcb_window_t root = rootWindow(connection_);
    if (clientList_ == XCB_ATOM_NONE) {
        const auto atoms = internAtoms(
            connection_, { "_NET_CLIENT_LIST", "_NET_WORKAREA", "_NET_WM_STRUT", "_NET_WM_STRUT_PARTIAL" });
        clientList_ = atoms[0];
        workArea_ = atoms[1];
        whole_ = atoms[2];
        partial_ = atoms[3];
    }
    // Followed before it is read, so that no change falls in between.
    addToEventMask(connection_, root, XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    const auto size = answerTo(connection_, xcb_get_geometry(connection_, root), xcb_get_geometry_reply);
    layout_ = { .root = size ? QSize(size->width, size->height) : QSize(), .struts = {} };
    const std::vector<xcb_window_t> windows = clients();
    // All questions first: one wait for all windows.
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
        const auto partial = answerTo(connection_, asked[at][0], xcb_get_property_reply);
        const auto whole = answerTo(connection_, asked[at][1], xcb_get_property_reply);
        const auto isThere = [](const auto& reply) { return reply && reply->type != XCB_ATOM_NONE; };
        if (!isThere(partial) && !isThere(whole))
            continue;
        bars.insert(windows[at]);
        if (!bars_.contains(windows[at]))
            addToEventMask(connection_, windows[at], XCB_EVENT_MASK_PROPERTY_CHANGE);
        const auto kept = strutsFrom(figuresOf(isThere(partial) ? partial : whole));
        layout_.struts.insert(layout_.struts.end(), kept.begin(), kept.end());
    }
    bars_ = std::move(bars);
}

} // namespace platform
