// SPDX-License-Identifier: Apache-2.0
#include "design/Paint.h"

#include <QPainter>
#include <QPen>
#include <QPointF>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cmath>

namespace ostrel {

namespace {

constexpr double ringWidth = 2;

/// Device pixels in a point.
double scaleOf(const QPainter& painter) { return std::abs(painter.deviceTransform().m22()); }

/// Keeps a painter's pen, brush and hints for its caller.
class Saved {
public:
    explicit Saved(QPainter& painter)
        : painter_(painter)
    {
        painter_.save();
        painter_.setRenderHint(QPainter::Antialiasing);
    }
    Saved(const Saved&) = delete;
    Saved& operator=(const Saved&) = delete;
    ~Saved() { painter_.restore(); }

private:
    QPainter& painter_;
};

void strokeRounded(QPainter& painter, const QRectF& rect, double radius, double width, const Color& color)
{
    const Saved saved(painter);
    painter.setPen(QPen(qColor(color), width));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(rect, radius, radius);
}

} // namespace

QColor qColor(const Color& color)
{
    const auto channel = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(
        channel(color.red), channel(color.green), channel(color.blue), channel(color.alpha));
}

void drawQuads(QPainter& painter, std::span<const Quad> quads)
{
    const Saved saved(painter);
    for (const Quad& quad : quads) {
        std::array<QPointF, 4> corners;
        std::ranges::transform(quad.corners, corners.begin(), [](auto at) { return QPointF(at.x, at.y); });
        painter.setBrush(qColor(quad.fill));
        if (quad.strokeWidth > 0)
            painter.setPen(
                QPen(qColor(quad.stroke), quad.strokeWidth, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
        else
            painter.setPen(Qt::NoPen);
        painter.drawConvexPolygon(corners.data(), static_cast<int>(corners.size()));
    }
}

double hairline(const QPainter& painter)
{
    const double scale = scaleOf(painter);
    // Rounded down: a view one point high may have no more whole pixels than that.
    return scale > 0 ? std::max(1.0, std::floor(scale)) / scale : 1;
}

QRectF snapped(const QPainter& painter, const QRectF& rect)
{
    bool invertible = false;
    const QTransform toDevice = painter.deviceTransform();
    const QTransform back = toDevice.inverted(&invertible);
    if (!invertible)
        return rect;
    const QRectF there = toDevice.mapRect(rect);
    const QPointF topLeft(std::round(there.left()), std::round(there.top()));
    const QPointF bottomRight(std::round(there.right()), std::round(there.bottom()));
    return back.mapRect(QRectF(topLeft, bottomRight));
}

void fillRounded(QPainter& painter, const QRectF& rect, double radius, const Color& color)
{
    const Saved saved(painter);
    painter.setPen(Qt::NoPen);
    painter.setBrush(qColor(color));
    painter.drawRoundedRect(rect, radius, radius);
}

void outlineRounded(QPainter& painter, const QRectF& bounds, double radius, const Color& color)
{
    const double width = hairline(painter);
    const double middle = width / 2;
    strokeRounded(
        painter, snapped(painter, bounds).adjusted(middle, middle, -middle, -middle), radius, width, color);
}

void drawRule(QPainter& painter, const QRectF& rect, const Color& color)
{
    QRectF line = snapped(painter, rect);
    line.setHeight(hairline(painter));
    painter.fillRect(line, qColor(color));
}

void drawFocusRing(QPainter& painter, const QRectF& bounds, double inset, double radius, const Color& color)
{
    strokeRounded(painter, bounds.adjusted(inset, inset, -inset, -inset), radius, ringWidth, color);
}

} // namespace ostrel
