// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Popover.h"
#include "platform/Screens.h"

#include <cstddef>
#include <optional>
#include <span>

#include <QSizeF>

namespace platform {

/// Where a popover of that size stands: it touches the anchor at that edge, its middle on the anchor's; at
/// the opposite edge where only that one has room; and moved into `visible`. One that is too high becomes
/// lower, though never lower than 400 points for it; what still doesn't fit hangs over the right and the
/// bottom. Global coordinates.
[[nodiscard]] Rect popoverFrame(
    const Rect& anchor, const QSizeF& size, Edge preferredEdge, const Rect& visible);

/// The display that the middle of the anchor is on, or the one nearest to it; nothing when there is none.
[[nodiscard]] std::optional<std::size_t> displayOf(const Rect& anchor, std::span<const Screen> displays);

} // namespace platform
