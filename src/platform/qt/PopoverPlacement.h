// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Popover.h"

#include <QSizeF>

namespace platform {

/// Where a popover of that size stands: it touches the anchor at that edge, its middle on the anchor's; at
/// the opposite edge where only that one has room; and moved into `visible`. One that is too high becomes
/// lower, though never lower than 400 points for it; what still doesn't fit hangs over the right and the
/// bottom. Global coordinates.
[[nodiscard]] Rect popoverFrame(
    const Rect& anchor, const QSizeF& size, Edge preferredEdge, const Rect& visible);

} // namespace platform
