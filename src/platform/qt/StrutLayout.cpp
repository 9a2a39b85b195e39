// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/StrutLayout.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include <QMargins>

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
        // Some bars leave the stretch out.
        if (figures.size() == partialFigures && figures[wholeFigures + at * 2 + 1] != 0) {
            strut.start = figures[wholeFigures + at * 2];
            strut.end = figures[wholeFigures + at * 2 + 1];
        }
        struts.push_back(strut);
    }
    return struts;
}

QRect stripOn(const QRect& display, const QSize& root, const Strut& strut)
{
    const bool upright = isUpright(strut.edge);
    const std::int64_t first = upright ? display.top() : display.left();
    const std::int64_t from = std::max(strut.start, first);
    const std::int64_t beyond
        = std::min(strut.end + 1, first + (upright ? display.height() : display.width()));
    const std::int64_t take = taken(strut, display, root);
    if (from >= beyond || take <= 0 || take * 2 >= (upright ? display.width() : display.height()))
        return {};
    const int at = static_cast<int>(from), length = static_cast<int>(beyond - from);
    const int thick = static_cast<int>(take);
    switch (strut.edge) {
    case Edge::left:
        return { display.left(), at, thick, length };
    case Edge::right:
        return { display.right() + 1 - thick, at, thick, length };
    case Edge::top:
        return { at, display.top(), length, thick };
    case Edge::bottom:
        break;
    }
    return { at, display.bottom() + 1 - thick, length, thick };
}

QRect freeArea(const QRect& display, const StrutLayout& bars)
{
    QMargins taken;
    for (const Strut& strut : bars.struts) {
        const QRect strip = stripOn(display, bars.root, strut);
        switch (strut.edge) {
        case Edge::left:
            taken.setLeft(std::max(taken.left(), strip.width()));
            break;
        case Edge::right:
            taken.setRight(std::max(taken.right(), strip.width()));
            break;
        case Edge::top:
            taken.setTop(std::max(taken.top(), strip.height()));
            break;
        case Edge::bottom:
            taken.setBottom(std::max(taken.bottom(), strip.height()));
            break;
        }
    }
    return display.marginsRemoved(taken);
}

} // namespace platform
