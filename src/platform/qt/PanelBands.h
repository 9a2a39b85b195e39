// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/qt/NativeScreens.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <xcb/xcb.h>

namespace platform {

/// A strip along an edge of the display that a desktop panel keeps for itself.
struct PanelBand {
    enum class Edge { top, bottom, left, right };

    Edge edge = Edge::top;
    PixelRect place;

    bool operator==(const PanelBand&) const = default;
};

/// The strips that one window keeps. `strut` is its _NET_WM_STRUT_PARTIAL, or the four figures of the older
/// _NET_WM_STRUT; anything else gives none.
[[nodiscard]] std::vector<PanelBand> panelBands(
    std::span<const std::uint32_t> strut, int displayWidth, int displayHeight);

/// Where an item most likely stands that no host tells the place of, in global coordinates: around the last
/// press within the panel's strip, else at the right end of a panel, else at the top right of the primary
/// screen. `length` in points.
[[nodiscard]] Rect guessedFrame(std::span<const NativeScreen> screens, std::span<const PanelBand> bands,
    std::optional<Point> lastPress, double length);

/// The panels of the display. Asked anew only after a change on the display. Main thread.
class X11PanelBands {
public:
    explicit X11PanelBands(xcb_connection_t* connection);

    /// Takes note of an event of the connection.
    void handle(const xcb_generic_event_t& event);
    [[nodiscard]] const std::vector<PanelBand>& bands();

private:
    void read();

    xcb_connection_t* connection_;
    xcb_window_t root_;
    xcb_atom_t clients_ = XCB_ATOM_NONE;
    xcb_atom_t workArea_ = XCB_ATOM_NONE;
    xcb_atom_t partial_ = XCB_ATOM_NONE;
    xcb_atom_t whole_ = XCB_ATOM_NONE;
    std::vector<PanelBand> bands_;
    bool stale_ = true;
};

} // namespace platform
