// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/X11CoverTracker.h"

#include "platform/qt/Xcb.h"

#include <algorithm>
#include <cstdint>

namespace platform {

namespace {

/// In 32-bit units; far more states than a window has.
constexpr std::uint32_t longestState = 64;

/// The first figure of WM_STATE for a window that stands for nothing but its icon.
constexpr std::uint32_t iconicState = 3;

} // namespace

X11CoverTracker::X11CoverTracker(xcb_connection_t* connection)
    : connection_(connection)
{
    const auto atoms = internAtoms(
        connection, { "_NET_WM_STATE", "_NET_WM_STATE_HIDDEN", "WM_STATE", "_NET_WM_WINDOW_TYPE" });
    netState_ = atoms[0];
    netHidden_ = atoms[1];
    state_ = atoms[2];
    kind_ = atoms[3];
}

void X11CoverTracker::watch(xcb_window_t window)
{
    if (windows_.contains(window))
        return;
    // Events first: a change between the two requests is then told, not missed.
    keepEvents(window);
    windows_[window].putAway = readPutAway(window);
}

bool X11CoverTracker::keepEvents(xcb_window_t window) const
{
    return addToEventMask(connection_, window,
               XCB_EVENT_MASK_VISIBILITY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY
                   | XCB_EVENT_MASK_PROPERTY_CHANGE)
        != EventMask::added;
}

void X11CoverTracker::forget(xcb_window_t window) { windows_.erase(window); }

bool X11CoverTracker::covered(xcb_window_t window) const
{
    const auto found = windows_.find(window);
    return found != windows_.end() && found->second.covered();
}

std::optional<xcb_window_t> X11CoverTracker::handle(const xcb_generic_event_t& event)
{
    // Events that another program made up have a bit more in their type, and fall through.
    switch (event.response_type) {
    case XCB_VISIBILITY_NOTIFY: {
        const auto& visibility = as<xcb_visibility_notify_event_t>(event);
        return change(visibility.window,
            [&](State& state) { state.obscured = visibility.state == XCB_VISIBILITY_FULLY_OBSCURED; });
    }
    case XCB_UNMAP_NOTIFY:
        return change(
            as<xcb_unmap_notify_event_t>(event).window, [](State& state) { state.obscured = false; });
    case XCB_DESTROY_NOTIFY:
        return change(as<xcb_destroy_notify_event_t>(event).window, [](State& state) { state = {}; });
    case XCB_PROPERTY_NOTIFY: {
        const auto& property = as<xcb_property_notify_event_t>(event);
        return change(property.window, [&](State& state) {
            if (property.atom == netState_ || property.atom == state_)
                state.putAway = readPutAway(property.window);
            else if (property.atom == kind_ && !keepEvents(property.window))
                state.obscured = false; // unknown: the window may have come to light meanwhile
        });
    }
    default:
        return {};
    }
}

bool X11CoverTracker::readPutAway(xcb_window_t window) const
{
    const auto ask = [&](xcb_atom_t property, xcb_atom_t type) {
        return xcb_get_property(connection_, 0, window, property, type, 0, longestState);
    };
    const auto askedNet = ask(netState_, XCB_ATOM_ATOM);
    const auto askedState = ask(state_, state_);
    const auto net = answerTo(connection_, askedNet, xcb_get_property_reply);
    const auto state = answerTo(connection_, askedState, xcb_get_property_reply);
    const auto states = figuresOf(net), icon = figuresOf(state);
    return std::ranges::find(states, netHidden_) != states.end()
        || (!icon.empty() && icon.front() == iconicState);
}

} // namespace platform
