// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/qt/StrutLayout.h"

#include <optional>
#include <set>
#include <vector>

#include <QSize>
#include <xcb/xcb.h>

namespace platform {

/// The room that the windows of an X display keep for themselves, read when it is asked for and kept until
/// an event of the connection says that it may have changed. Main thread.
class X11Struts {
public:
    /// Asks nobody yet.
    explicit X11Struts(xcb_connection_t* connection);

    /// Empty without a window manager.
    [[nodiscard]] const std::vector<Strut>& all();

    /// The size of the whole X screen at this moment, in pixels. One round trip.
    [[nodiscard]] QSize rootSize() const;

    /// Takes an event in. True when the struts may have changed.
    bool handle(const xcb_generic_event_t& event);

private:
    void read();
    [[nodiscard]] std::vector<xcb_window_t> clients() const;

    xcb_connection_t* connection_;
    xcb_atom_t clientList_ = XCB_ATOM_NONE;
    xcb_atom_t workArea_ = XCB_ATOM_NONE; ///< written anew by the window manager for any bar's change
    xcb_atom_t whole_ = XCB_ATOM_NONE;
    xcb_atom_t partial_ = XCB_ATOM_NONE;
    std::set<xcb_window_t> bars_; ///< only these are followed: others' titles would wake us all day
    std::optional<std::vector<Strut>> struts_;
};

} // namespace platform
