// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"

#include <span>
#include <vector>

#include <QPointF>
#include <QRect>

class QScreen;

namespace platform {

/// The lower left corner of the primary display in the toolkit's coordinates, where y grows downward: the
/// origin of the global ones. (0, 0) without a display. Main thread.
[[nodiscard]] QPointF globalOrigin();

/// The toolkit's coordinates in global ones. Both count logical points.
[[nodiscard]] Point toGlobal(const QPointF& point, const QPointF& origin);
[[nodiscard]] Rect toGlobal(const QRectF& rect, const QPointF& origin);

/// The other way.
[[nodiscard]] QPointF toToolkit(Point point, const QPointF& origin);
[[nodiscard]] QRectF toToolkit(const Rect& rect, const QPointF& origin);

/// One display in both ways of counting.
struct DisplayPlace {
    QRect pixels; ///< as the X server counts: from the whole screen's upper left, y growing downward
    Rect frame; ///< in global coordinates
    double ratio = 1; ///< pixels a point
};

[[nodiscard]] DisplayPlace placeOf(const QScreen& screen);

/// The displays as they are now, the primary one first; none before the application object. Main thread.
[[nodiscard]] std::vector<DisplayPlace> displayPlaces();

/// The display that holds the global point, or the one nearest to it; null without displays.
[[nodiscard]] const DisplayPlace* displayAt(std::span<const DisplayPlace> displays, Point point);

/// A pixel's upper left corner in global coordinates, by the display that holds it or is nearest to it; the
/// origin without displays.
[[nodiscard]] Point fromPixels(std::span<const DisplayPlace> displays, const QPoint& pixel);
/// A rectangle that begins on one display and is measured there.
[[nodiscard]] Rect fromPixels(std::span<const DisplayPlace> displays, const QRect& pixels);

} // namespace platform
