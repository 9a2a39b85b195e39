// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/StrutLayout.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

namespace platform {

namespace {

/// In the order of the window properties.
constexpr std::array edges { Edge::left, Edge::right, Edge::top, Edge::bottom };

constexpr std::size_t wholeFigures = edges.size();
constexpr std::size_t partialFigures = wholeFigures * 3;

bool isUpright(Edge edge) { return edge == Edge::left || edge == Edge::right; }

/// How much a strut takes from its side of the display, in pixels.
std::int64_t taken(const Strut& strut, const QRect& display, const QSize& root)
{
    switch (strut.edge) {
    case Edge::left:
        return strut.thickness - display.left();
    case Edge::right:
        return strut.thickness - (root.width() - (display.left() + display.width()));
    case Edge::top:
        return strut.thickness - display.top();
    case Edge::bottom:
        break;
    }
    return strut.thickness - (root.height() - (display.top() + display.height()));
}

} // namespace

std::vector<Strut> strutsFrom(std::span<const std::uint32_t> figures)
{
    std::vector<Strut> struts;
    if (figures.size() != wholeFigures && figures.size() != partialFigures)
        return struts;
    for (std::size_t at = 0; at < edges.size(); ++at) {
        if (figures[at] == 0)
            continue;
        Strut strut { edges[at], figures[at], 0, std::numeric_limits<std::uint32_t>::max() };
        if (figures.size() == partialFigures) {
            strut.start = figures[wholeFigures + at * 2];
            strut.end = figures[wholeFigures + at * 2 + 1];
        }
        struts.push_back(strut);
    }
    return struts;
}

QRect freeArea(const QRect& display, const QSize& root, std::span<const Strut> struts)
{
    std::int64_t left = 0, right = 0, top = 0, bottom = 0;
    for (const Strut& strut : struts) {
        const bool upright = isUpright(strut.edge);
        const std::int64_t first = upright ? display.top() : display.left();
        const std::int64_t beyond = first + (upright ? display.height() : display.width());
        const std::int64_t take = taken(strut, display, root);
        if (strut.start >= beyond || strut.end < first
            || take * 2 >= (upright ? display.width() : display.height()))
            continue;
        std::int64_t& side = strut.edge == Edge::left ? left
            : strut.edge == Edge::right               ? right
            : strut.edge == Edge::top                 ? top
                                                      : bottom;
        side = std::max(side, take);
    }
    return display.adjusted(
        static_cast<int>(left), static_cast<int>(top), -static_cast<int>(right), -static_cast<int>(bottom));
}

} // namespace platform
