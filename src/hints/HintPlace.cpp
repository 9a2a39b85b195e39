// SPDX-License-Identifier: Apache-2.0
#include "hints/HintPlace.h"

#include <algorithm>

namespace ostrel {

namespace {

// In points.
constexpr double margin = 8; ///< to the left and right edges of the free area
constexpr double gap = 10; ///< to the bar item

} // namespace

platform::Point hintPlace(
    double width, double height, const platform::Rect& item, const platform::Rect& visible)
{
    const double right = visible.x + visible.width - width - margin;
    const double left = visible.x + margin;
    const double top = visible.y + visible.height;
    const double x = std::min(right, std::max(left, item.x + item.width / 2 - width / 2));
    const double below = item.y - height - gap;
    if (below >= visible.y)
        // An item that doesn't fill its bar leaves the card hanging from within the bar.
        return { x, std::min(below, top - height) };
    const double above = std::max(item.y + item.height + gap, visible.y);
    return { x, std::min(above, top - height) };
}

} // namespace ostrel
