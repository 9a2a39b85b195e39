// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/StatusItem.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <xcb/xcb.h>

namespace platform {

/// The names that docking needs, in the display's numbers.
struct TrayAtoms {
    explicit TrayAtoms(xcb_connection_t* connection);

    xcb_atom_t selection;
    xcb_atom_t opcode;
    xcb_atom_t visual;
    xcb_atom_t manager;
    xcb_atom_t embedInfo;
    xcb_atom_t windowName;
    xcb_atom_t utf8;
};

/// How a tray wants its icons' windows.
struct TrayVisual {
    std::uint8_t depth = XCB_COPY_FROM_PARENT;
    xcb_visualid_t id = XCB_COPY_FROM_PARENT;

    [[nodiscard]] bool blends() const { return depth == 32; }
};

/// The small window that a tray takes in, and what is drawn on it. It is drawn for the size that the tray
/// gives it; no request of it is answered with an error that anybody would see. Main thread.
class TrayWindow {
public:
    /// The window stays unmapped until a tray takes it.
    TrayWindow(xcb_connection_t* connection, const TrayAtoms& atoms, TrayVisual visual,
        const std::string& programName);
    TrayWindow(const TrayWindow&) = delete;
    TrayWindow& operator=(const TrayWindow&) = delete;
    ~TrayWindow();

    [[nodiscard]] xcb_window_t id() const { return window_; }
    /// Takes in what to show; `scale` is pixels a point.
    void show(const StatusItemFace& face, double scale);
    /// Its size in pixels has become another.
    void resized(int width, int height);
    /// Draws all of it.
    void paint();
    /// The X server destroyed it with the tray's own window.
    void gone() { window_ = XCB_NONE; }

private:
    void hintSize(double length, double scale);
    void send(xcb_void_cookie_t cookie) const;
    [[nodiscard]] std::vector<std::uint32_t> background() const;
    void put(const std::vector<std::uint32_t>& pixels) const;

    xcb_connection_t* connection_;
    const TrayAtoms& atoms_;
    TrayVisual visual_;
    xcb_window_t window_;
    xcb_colormap_t colours_ = XCB_NONE;
    xcb_gcontext_t pen_ = XCB_NONE;
    StatusItemFace face_;
    double scale_ = 0;
    int width_;
    int height_;
};

} // namespace platform
