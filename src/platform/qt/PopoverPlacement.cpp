// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/PopoverPlacement.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace platform {

namespace {

constexpr double lowestShrunk = 400;

/// What fractional scales leave of a sum is no lack of room.
constexpr double tolerance = 0.5;

/// A stretch of one axis.
struct Span {
    double low = 0, length = 0;

    [[nodiscard]] double high() const { return low + length; }
};

/// The low end of something that stands on one side of the anchor, or on the other where only that has room.
/// An anchor beyond the visible stretch, as in a desktop bar, counts as lying at its end.
double beside(const Span& anchor, double length, bool below, const Span& visible)
{
    const double lower = std::min(anchor.low, visible.high()) - length;
    const double upper = std::max(anchor.high(), visible.low);
    const bool lowerFits = lower >= visible.low - tolerance;
    const bool upperFits = upper + length <= visible.high() + tolerance;
    const bool isBelow = below ? lowerFits || !upperFits : lowerFits && !upperFits;
    return isBelow ? lower : upper;
}

double centred(const Span& anchor, double length) { return anchor.low + (anchor.length - length) / 2; }

} // namespace

Rect popoverFrame(const Rect& anchor, const QSizeF& size, Edge preferredEdge, const Rect& visible)
{
    Rect frame { 0, 0, size.width(), std::min(size.height(), std::max(visible.height, lowestShrunk)) };
    const Span across { anchor.x, anchor.width }, upward { anchor.y, anchor.height };
    const Span visibleAcross { visible.x, visible.width }, visibleUpward { visible.y, visible.height };
    if (preferredEdge == Edge::bottom || preferredEdge == Edge::top) {
        frame.x = centred(across, frame.width);
        frame.y = beside(upward, frame.height, preferredEdge == Edge::bottom, visibleUpward);
    } else {
        frame.x = beside(across, frame.width, preferredEdge == Edge::left, visibleAcross);
        frame.y = centred(upward, frame.height);
    }
    frame.x = std::max(visible.x, std::min(frame.x, visibleAcross.high() - frame.width));
    frame.y = std::min(visibleUpward.high() - frame.height, std::max(frame.y, visible.y));
    return frame;
}

} // namespace platform
