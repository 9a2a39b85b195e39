// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Popover.h"

#include <cstdint>
#include <span>
#include <vector>

#include <QRect>
#include <QSize>

namespace platform {

/// Room that a desktop bar keeps for itself along one edge of the whole X screen, which may span several
/// displays. In pixels.
struct Strut {
    Edge edge = Edge::top;
    std::int64_t thickness = 0; ///< from that edge of the whole screen
    std::int64_t start = 0, end = 0; ///< the stretch of that edge, the last pixel included

    bool operator==(const Strut&) const = default;
};

/// The room that all bars keep.
struct StrutLayout {
    QSize root; ///< of the whole X screen, in pixels
    std::vector<Strut> struts;
};

/// What a bar's window says: twelve figures of `_NET_WM_STRUT_PARTIAL`, or four of `_NET_WM_STRUT`, which
/// means whole edges. Empty for any other count.
[[nodiscard]] std::vector<Strut> strutsFrom(std::span<const std::uint32_t> figures);

/// What a strut takes of a display; empty for nothing. One that would take half of it or more is another
/// display's, or nonsense. All in pixels, y downward; `root` is the size of the whole X screen.
[[nodiscard]] QRect stripOn(const QRect& display, const QSize& root, const Strut& strut);

/// What the bars leave free of a display, in the same way.
[[nodiscard]] QRect freeArea(const QRect& display, const StrutLayout& bars);

} // namespace platform
