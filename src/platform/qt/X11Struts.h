// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/qt/StrutLayout.h"
#include "platform/qt/XcbEventFilter.h"

#include <optional>
#include <set>
#include <vector>

#include <xcb/xcb.h>

namespace platform {

/// The room that the windows of an X display keep for themselves, read when it is asked for and kept until
/// an event of the connection says that it may have changed. One serves the whole program. Main thread.
class X11Struts {
public:
    /// Of the toolkit's display, whose events it follows by itself from the first question on. Asks nobody
    /// yet and needs no application object.
    X11Struts() = default;
    /// Of another connection, which has to show it all events.
    explicit X11Struts(xcb_connection_t* connection);
    X11Struts(const X11Struts&) = delete;
    X11Struts& operator=(const X11Struts&) = delete;

    /// As it is now: without struts where there is no display or no window manager.
    [[nodiscard]] const StrutLayout& layout();

    /// Takes an event in. True when the layout may have changed.
    bool handle(const xcb_generic_event_t& event);

private:
    void read();
    [[nodiscard]] std::vector<xcb_window_t> clients() const;

    xcb_connection_t* connection_ = nullptr;
    xcb_atom_t clientList_ = XCB_ATOM_NONE;
    xcb_atom_t workArea_ = XCB_ATOM_NONE; ///< written anew by the window manager for any bar's change
    xcb_atom_t whole_ = XCB_ATOM_NONE;
    xcb_atom_t partial_ = XCB_ATOM_NONE;
    std::set<xcb_window_t> bars_; ///< only these are followed: others' titles would wake us all day
    StrutLayout layout_;
    bool fresh_ = false; ///< the layout is the display's
    std::optional<XcbEventFilter> filter_;
};

} // namespace platform
