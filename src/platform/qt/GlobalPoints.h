// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"

#include <QPointF>
#include <QRectF>

namespace platform {

/// The lower left corner of the primary display in the toolkit's coordinates, where y grows downward: the
/// origin of the global ones. (0, 0) without a display. Main thread.
[[nodiscard]] QPointF globalOrigin();

/// The toolkit's coordinates in global ones. Both count logical points.
[[nodiscard]] Point toGlobal(const QPointF& point, const QPointF& origin);
[[nodiscard]] Rect toGlobal(const QRectF& rect, const QPointF& origin);

/// The other way.
[[nodiscard]] QRectF toToolkit(const Rect& rect, const QPointF& origin);

} // namespace platform
