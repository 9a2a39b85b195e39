// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/PanelBands.h"

#include "platform/qt/Xcb.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

namespace platform {

namespace {

/// The height of an item where no panel tells its own, in points.
constexpr double usualThickness = 24;
/// In 32-bit units; far more windows than a desktop has.
constexpr std::uint32_t mostWindows = 4096;
constexpr std::size_t wholeFigures = 4;
constexpr std::size_t partialFigures = 12;

std::vector<std::uint32_t> figures(xcb_connection_t* connection, xcb_get_property_cookie_t asked)
{
    xcb_generic_error_t* error = nullptr;
    const XcbReply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection, asked, &error), &std::free);
    std::free(error);
    if (!reply || reply->format != 32)
        return {};
    const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return { first, first + xcb_get_property_value_length(reply.get()) / static_cast<int>(sizeof *first) };
}

/// The part of the strip that lies on the screen where the strip ends: a strut counts from the edge of the
/// whole display, also for a panel on a screen further in.
PixelRect onItsScreen(const PanelBand& band, const NativeScreen& screen)
{
    const PixelRect& on = screen.pixels;
    const int left = std::max(band.place.x, on.x);
    const int top = std::max(band.place.y, on.y);
    return { left, top, std::min(band.place.x + band.place.width, on.x + on.width) - left,
        std::min(band.place.y + band.place.height, on.y + on.height) - top };
}

const NativeScreen* screenOfBand(std::span<const NativeScreen> screens, const PanelBand& band)
{
    const PixelRect& p = band.place;
    switch (band.edge) {
    case PanelBand::Edge::top:
        return screenAt(screens, p.x + p.width / 2.0, p.y + p.height - 1);
    case PanelBand::Edge::left:
        return screenAt(screens, p.x + p.width - 1, p.y + p.height / 2.0);
    case PanelBand::Edge::bottom:
    case PanelBand::Edge::right:
        break;
    }
    return screenAt(screens, band.edge == PanelBand::Edge::bottom ? p.x + p.width / 2.0 : p.x,
        band.edge == PanelBand::Edge::bottom ? p.y : p.y + p.height / 2.0);
}

bool holds(const Rect& rect, Point point)
{
    return point.x >= rect.x && point.x <= rect.x + rect.width && point.y >= rect.y
        && point.y <= rect.y + rect.height;
}

/// A square around the place, moved so that it lies within the bounds.
Rect squareAround(Point place, double side, const Rect& bounds)
{
    const auto within = [side](double middle, double from, double length) {
        return std::max(from, std::min(middle - side / 2, from + length - side));
    };
    return { within(place.x, bounds.x, bounds.width), within(place.y, bounds.y, bounds.height), side, side };
}

} // namespace

std::vector<PanelBand> panelBands(std::span<const std::uint32_t> strut, int displayWidth, int displayHeight)
{
    std::vector<PanelBand> bands;
    if (strut.size() != wholeFigures && strut.size() != partialFigures)
        return bands;
    struct Side {
        PanelBand::Edge edge;
        bool lying;
        bool far;
    };
    // In the order of the property: how deep each is, then where along its edge it starts and ends.
    constexpr std::array<Side, wholeFigures> sides { { { PanelBand::Edge::left, false, false },
        { PanelBand::Edge::right, false, true }, { PanelBand::Edge::top, true, false },
        { PanelBand::Edge::bottom, true, true } } };
    for (std::size_t at = 0; at < sides.size(); ++at) {
        const auto [edge, lying, far] = sides[at];
        const auto along = static_cast<std::uint32_t>(lying ? displayWidth : displayHeight);
        const auto across = static_cast<std::uint32_t>(lying ? displayHeight : displayWidth);
        const bool partial = strut.size() == partialFigures;
        const std::uint32_t depth = strut[at];
        const std::uint32_t start = partial ? strut[wholeFigures + 2 * at] : 0;
        std::uint32_t end = partial ? strut[wholeFigures + 2 * at + 1] : along - 1;
        if (partial && start == 0 && end == 0)
            end = along - 1; // some panels leave the ends out
        if (depth == 0 || depth >= across || start > end || start >= along)
            continue;
        const int from = static_cast<int>(start);
        const int length = static_cast<int>(std::min(end, along - 1) - start + 1);
        const int thick = static_cast<int>(depth);
        const int off = far ? static_cast<int>(across - depth) : 0;
        bands.push_back({ edge,
            lying ? PixelRect { from, off, length, thick } : PixelRect { off, from, thick, length } });
    }
    return bands;
}

Rect guessedFrame(std::span<const NativeScreen> screens, std::span<const PanelBand> bands,
    std::optional<Point> lastPress, double length)
{
    if (screens.empty())
        return { 0, 0, length, usualThickness };
    const auto strip = [&](const PanelBand& band) {
        return globalRect(screens, onItsScreen(band, *screenOfBand(screens, band)));
    };
    if (lastPress) {
        for (const PanelBand& band : bands)
            if (const Rect place = strip(band); holds(place, *lastPress))
                return squareAround(*lastPress, std::min(place.width, place.height), place);
        return squareAround(*lastPress, usualThickness, screenOf(screens, *lastPress)->frame);
    }
    // With several panels the items are most often in the upper one.
    using Edge = PanelBand::Edge;
    for (const Edge edge : { Edge::top, Edge::bottom, Edge::right, Edge::left })
        for (const PanelBand& band : bands) {
            if (band.edge != edge)
                continue;
            const Rect place = strip(band);
            if (place.width <= 0 || place.height <= 0)
                continue;
            if (edge == Edge::right || edge == Edge::left)
                return { place.x, place.y, place.width, std::min(place.width, place.height) };
            const double width = std::min(length, place.width);
            return { place.x + place.width - width, place.y, width, place.height };
        }
    const Rect& frame = screens.front().frame;
    return { frame.x + frame.width - length, frame.y + frame.height - usualThickness, length,
        usualThickness };
}

X11PanelBands::X11PanelBands(xcb_connection_t* connection)
    : connection_(connection)
    , root_(rootWindow(connection))
{
    const auto atoms = internAtoms(
        connection, { "_NET_CLIENT_LIST", "_NET_WORKAREA", "_NET_WM_STRUT_PARTIAL", "_NET_WM_STRUT" });
    clients_ = atoms[0];
    workArea_ = atoms[1];
    partial_ = atoms[2];
    whole_ = atoms[3];
    addToEventMask(connection, root_, XCB_EVENT_MASK_PROPERTY_CHANGE);
}

void X11PanelBands::handle(const xcb_generic_event_t& event)
{
    if (event.response_type != XCB_PROPERTY_NOTIFY)
        return;
    const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (property.window == root_ && (property.atom == clients_ || property.atom == workArea_))
        stale_ = true;
}

const std::vector<PanelBand>& X11PanelBands::bands()
{
    if (stale_)
        read();
    stale_ = false;
    return bands_;
}

void X11PanelBands::read()
{
    bands_.clear();
    const auto ask = [&](xcb_window_t window, xcb_atom_t name, xcb_atom_t type, std::uint32_t most) {
        return xcb_get_property(connection_, 0, window, name, type, 0, most);
    };
    const auto askedSize = xcb_get_geometry(connection_, root_);
    const auto windows = figures(connection_, ask(root_, clients_, XCB_ATOM_WINDOW, mostWindows));
    const XcbReply<xcb_get_geometry_reply_t> size(
        xcb_get_geometry_reply(connection_, askedSize, nullptr), &std::free);
    if (!size)
        return;
    // All questions first: one wait for all windows.
    std::vector<xcb_get_property_cookie_t> asked;
    for (const xcb_window_t window : windows) {
        asked.push_back(ask(window, partial_, XCB_ATOM_CARDINAL, partialFigures));
        asked.push_back(ask(window, whole_, XCB_ATOM_CARDINAL, wholeFigures));
    }
    for (std::size_t at = 0; at + 1 < asked.size(); at += 2) {
        auto strut = figures(connection_, asked[at]);
        const auto older = figures(connection_, asked[at + 1]);
        if (strut.size() != partialFigures)
            strut = older;
        for (const PanelBand& band : panelBands(strut, size->width, size->height))
            bands_.push_back(band);
    }
}

} // namespace platform
