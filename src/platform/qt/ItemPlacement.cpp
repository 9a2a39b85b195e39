// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/ItemPlacement.h"

#include <algorithm>
#include <vector>

namespace platform {

namespace {

/// The height of an item where no bar tells its own, in points.
constexpr double usualThickness = 24;
/// Between the item and its menu, in points.
constexpr double gap = 2;

/// What a bar has of one display, in global coordinates.
struct Strip {
    Edge edge = Edge::top;
    Rect place;
};

std::vector<Strip> stripsOf(std::span<const DisplayPlace> displays, const StrutLayout& bars)
{
    std::vector<Strip> strips;
    for (const DisplayPlace& display : displays)
        for (const Strut& strut : bars.struts)
            if (const QRect strip = stripOn(display.pixels, bars.root, strut); !strip.isEmpty())
                strips.push_back({ strut.edge, fromPixels({ &display, 1 }, strip) });
    return strips;
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

Rect guessedFrame(std::span<const DisplayPlace> displays, const StrutLayout& bars,
    std::optional<Point> lastPress, std::optional<double> length)
{
    const double usualLength = length.value_or(usualThickness);
    if (displays.empty())
        return { 0, 0, usualLength, usualThickness };
    const std::vector<Strip> strips = stripsOf(displays, bars);
    if (lastPress) {
        for (const auto& [edge, place] : strips)
            if (holds(place, *lastPress))
                return squareAround(*lastPress, std::min(place.width, place.height), place);
        return squareAround(*lastPress, usualThickness, displayAt(displays, *lastPress)->frame);
    }
    // With several bars the items are most often in the upper one.
    for (const Edge wanted : { Edge::top, Edge::bottom, Edge::right, Edge::left })
        for (const auto& [edge, place] : strips) {
            if (edge != wanted)
                continue;
            if (edge == Edge::right || edge == Edge::left)
                return { place.x, place.y, place.width, std::min(place.width, place.height) };
            const double width = std::min(length.value_or(place.height), place.width);
            return { place.x + place.width - width, place.y, width, place.height };
        }
    const Rect& frame = displays.front().frame;
    return { frame.x + frame.width - usualLength, frame.y + frame.height - usualThickness, usualLength,
        usualThickness };
}

Point menuCorner(const Rect& item, const Rect& screen, double menuHeight)
{
    const bool low = item.y + item.height / 2 < screen.y + screen.height / 2;
    return { item.x, low ? item.y + item.height + gap + menuHeight : item.y - gap };
}

} // namespace platform
