// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Color.h"
#include "design/Quad.h"

#include <QColor>
#include <QRectF>

#include <span>

class QPainter;

namespace ostrel {

[[nodiscard]] QColor qColor(const Color& color);

/// Paints each polygon with smooth edges, in order.
void drawQuads(QPainter& painter, std::span<const Quad> quads);

/// The width, in points, of a line that is meant to be one point: a whole number of device pixels at every
/// scale, and at least one.
[[nodiscard]] double hairline(const QPainter& painter);

/// The rectangle with its edges moved to the nearest device pixels.
[[nodiscard]] QRectF snapped(const QPainter& painter, const QRectF& rect);

/// The same, but never thinner than a device pixel.
[[nodiscard]] QRectF crisp(const QPainter& painter, const QRectF& rect);

/// A rectangle with round corners and smooth edges.
void fillRounded(QPainter& painter, const QRectF& rect, double radius, const Color& color);

/// A crisp outline one hairline wide that lies wholly inside the bounds. `radius` is that of its middle.
void outlineRounded(QPainter& painter, const QRectF& bounds, double radius, const Color& color);

/// A crisp rule one hairline high along the top of the rectangle.
void drawRule(QPainter& painter, const QRectF& rect, const Color& color);

/// The ring of the view that has the keyboard: two points wide, its middle `inset` inside the bounds.
void drawFocusRing(QPainter& painter, const QRectF& bounds, double inset, double radius, const Color& color);

} // namespace ostrel
