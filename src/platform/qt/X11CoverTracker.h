// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>

#include <xcb/xcb.h>

namespace platform {

/// Which windows of an X display show no pixel, from the events of one connection: those that others hide
/// wholly, and those that the window manager put away (minimised, rolled up, on another workspace). A display
/// whose windows are put together by a compositor never tells the first. Main thread.
class X11CoverTracker {
public:
    explicit X11CoverTracker(xcb_connection_t* connection);

    /// Follows a window. What hides it is known from the next change on, so begin before it is shown.
    void watch(xcb_window_t window);
    void forget(xcb_window_t window);

    /// False for a window that isn't followed. Asks nobody.
    [[nodiscard]] bool covered(xcb_window_t window) const;

    /// Takes an event in; the window whose answer it changed, if any.
    std::optional<xcb_window_t> handle(const xcb_generic_event_t& event);

private:
    struct State {
        bool obscured = false;
        bool putAway = false;

        [[nodiscard]] bool covered() const { return obscured || putAway; }
    };

    /// Gives the window if `apply` turned its answer.
    template <typename Apply>
    std::optional<xcb_window_t> change(xcb_window_t window, Apply apply)
    {
        const auto found = windows_.find(window);
        if (found == windows_.end())
            return {};
        const bool before = found->second.covered();
        apply(found->second);
        return found->second.covered() == before ? std::nullopt : std::optional(window);
    }

    /// The toolkit chooses a window's events anew when its kind changes, and knows nothing of ours. False
    /// when they were missing.
    bool keepEvents(xcb_window_t window) const;
    /// Asks the display, since the event about a property doesn't carry it.
    [[nodiscard]] bool readPutAway(xcb_window_t window) const;

    xcb_connection_t* connection_;
    xcb_atom_t netState_ = XCB_ATOM_NONE; ///< the states that the window manager and the window agreed on
    xcb_atom_t netHidden_ = XCB_ATOM_NONE;
    xcb_atom_t state_ = XCB_ATOM_NONE; ///< the older word of the window manager: normal, iconic or withdrawn
    xcb_atom_t kind_
        = XCB_ATOM_NONE; ///< what kind of window it is, which the toolkit writes after its choice of events
    std::map<xcb_window_t, State> windows_;
};

} // namespace platform
