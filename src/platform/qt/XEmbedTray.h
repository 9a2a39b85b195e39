// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/qt/TrayWindow.h"

#include <functional>
#include <memory>
#include <set>

#include <QRect>

namespace platform {

/// A press on a docked window, in pixels from the display's upper left.
struct TrayPress {
    int x = 0;
    int y = 0;
    bool secondary = false;
    bool control = false;
};

/// An item in a tray of the older kind, which takes a window in. For as long as this lives it docks with the
/// tray there is, and again with each that comes. Main thread.
class XEmbedTray {
public:
    struct Owner {
        std::function<void(const TrayPress&)> pressed; ///< a button was pressed and let go over the window
        std::function<void(bool inside)> hovered; ///< the pointer came or went
    };

    /// Where the docked window is.
    struct Place {
        QRect frame; ///< in pixels from the display's upper left
        bool seen = false; ///< it and all windows that it lies in are mapped
    };

    /// Docks at once where there is a tray; `scale` is pixels a point.
    XEmbedTray(xcb_connection_t* connection, std::string programName, StatusItemFace face, double scale,
        Owner owner);

    void show(const StatusItemFace& face, double scale);
    /// Every event of the connection has to come by here.
    void handle(const xcb_generic_event_t& event);
    /// Nothing while no tray has the window. The X server is asked only after something moved.
    [[nodiscard]] std::optional<Place> place();

private:
    void findTray();
    [[nodiscard]] TrayVisual visualOf(xcb_window_t tray) const;
    void askToDock();
    /// The window lies in another one now.
    void taken(xcb_window_t parent);
    /// One of the windows that it lies in was moved into another.
    void lookAround();
    void buttonMoved(const xcb_button_release_event_t& event, bool down);

    xcb_connection_t* connection_;
    TrayAtoms atoms_;
    std::string programName_;
    StatusItemFace face_;
    double scale_;
    Owner owner_;
    xcb_window_t tray_ = XCB_NONE;
    std::unique_ptr<TrayWindow> window_;
    std::set<xcb_window_t> around_; ///< the windows that it lies in; empty while it isn't docked
    std::optional<Place> place_;
    std::uint8_t pressed_ = 0; ///< the button that went down over the window
};

} // namespace platform
