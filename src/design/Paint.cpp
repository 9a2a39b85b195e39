// SPDX-License-Identifier: Apache-2.0
#include "design/Paint.h"

#include "design/QuadRaster.h"

#include <QImage>
#include <QPaintDevice>
#include <QPainter>
#include <QPen>
#include <QPointF>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

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

/// The device pixels that the quads may touch, as far as the device has them.
QRect layerOf(std::span<const Quad> quads, const QTransform& toDevice, const QPainter& painter)
{
    QRectF bounds;
    for (const Quad& quad : quads) {
        const auto [left, right] = std::ranges::minmax(quad.corners, {}, &ScenePoint::x);
        const auto [top, bottom] = std::ranges::minmax(quad.corners, {}, &ScenePoint::y);
        const double around = quad.strokeWidth * QuadRaster::outlineReach;
        bounds |= QRectF(QPointF(left.x, top.y), QPointF(right.x, bottom.y))
                      .adjusted(-around, -around, around, around);
    }
    const QPaintDevice& device = *painter.device();
    // A view tells its size in points, and a picture in pixels. A view is painted somewhere within the device
    // of its window.
    const double ratio = device.devType() == QInternal::Widget ? 1 : device.devicePixelRatioF();
    const QTransform ofDevice = painter.worldTransform().inverted() * toDevice;
    const QRectF all = ofDevice.mapRect(QRectF(0, 0, device.width() / ratio, device.height() / ratio));
    return (toDevice.mapRect(bounds) & all).toAlignedRect();
}

/// Where something begins and ends along one axis, in device pixels.
struct Edges {
    double from;
    double to;
};

/// The rectangle with its edges moved, in device pixels, as `moved` says.
template <typename Moved>
QRectF onPixels(const QPainter& painter, const QRectF& rect, Moved moved)
{
    bool invertible = false;
    const QTransform toDevice = painter.deviceTransform();
    const QTransform back = toDevice.inverted(&invertible);
    if (!invertible)
        return rect;
    const QRectF there = toDevice.mapRect(rect);
    const auto [left, right] = moved(there.left(), there.right());
    const auto [top, bottom] = moved(there.top(), there.bottom());
    return back.mapRect(QRectF(QPointF(left, top), QPointF(right, bottom)));
}

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
    // A layer of whole device pixels under all of them, laid over what is there in one go.
    const QTransform toDevice = painter.deviceTransform();
    const double scale = scaleOf(painter);
    const QRect layer = layerOf(quads, toDevice, painter);
    if (layer.isEmpty() || scale <= 0)
        return;
    QImage image(layer.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const PixelBuffer pixels { reinterpret_cast<std::uint32_t*>(image.bits()), image.width(), image.height(),
        image.bytesPerLine() / static_cast<qsizetype>(sizeof(std::uint32_t)) };
    const QPointF origin = toDevice.inverted().map(QPointF(layer.topLeft()));
    QuadRaster().paint(pixels, quads, scale, { origin.x(), origin.y() });
    painter.save();
    painter.translate(origin);
    painter.scale(1 / scale, 1 / scale);
    painter.drawImage(QPointF(), image);
    painter.restore();
}

double hairline(const QPainter& painter)
{
    const double scale = scaleOf(painter);
    // Rounded down: a view one point high may have no more whole pixels than that.
    return scale > 0 ? std::max(1.0, std::floor(scale)) / scale : 1;
}

QRectF snapped(const QPainter& painter, const QRectF& rect)
{
    return onPixels(painter, rect, [](double from, double to) {
        return Edges { std::round(from), std::round(to) };
    });
}

QRectF crisp(const QPainter& painter, const QRectF& rect)
{
    return onPixels(painter, rect, [](double from, double to) {
        const Edges near { std::round(from), std::round(to) };
        if (near.from < near.to)
            return near;
        // The pixel that has the middle.
        const double first = std::floor((from + to) / 2);
        return Edges { first, first + 1 };
    });
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
