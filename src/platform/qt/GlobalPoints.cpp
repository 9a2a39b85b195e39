// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/GlobalPoints.h"

#include <algorithm>
#include <cmath>

#include <QGuiApplication>
#include <QScreen>

namespace platform {

namespace {

/// How far a place lies outside of a rectangle.
double beyond(const QPointF& place, const QRectF& rect)
{
    const auto off = [](double at, double from, double to) { return std::max({ from - at, at - to, 0.0 }); };
    return std::hypot(off(place.x(), rect.left(), rect.right()), off(place.y(), rect.top(), rect.bottom()));
}

template <typename Distance>
const DisplayPlace* nearest(std::span<const DisplayPlace> displays, Distance distance)
{
    const auto best = std::ranges::min_element(displays, {}, distance);
    return best == displays.end() ? nullptr : &*best;
}

const DisplayPlace* displayAt(std::span<const DisplayPlace> displays, const QPoint& pixel)
{
    const QPointF middle = QPointF(pixel) + QPointF(0.5, 0.5);
    return nearest(
        displays, [&](const DisplayPlace& display) { return beyond(middle, QRectF(display.pixels)); });
}

} // namespace

QPointF globalOrigin()
{
    const QScreen* primary = qGuiApp ? QGuiApplication::primaryScreen() : nullptr;
    return primary ? QRectF(primary->geometry()).bottomLeft() : QPointF();
}

Point toGlobal(const QPointF& point, const QPointF& origin)
{
    return { point.x() - origin.x(), origin.y() - point.y() };
}

Rect toGlobal(const QRectF& rect, const QPointF& origin)
{
    const Point corner = toGlobal(rect.bottomLeft(), origin);
    return { corner.x, corner.y, rect.width(), rect.height() };
}

QPointF toToolkit(Point point, const QPointF& origin)
{
    return { origin.x() + point.x, origin.y() - point.y };
}

QRectF toToolkit(const Rect& rect, const QPointF& origin)
{
    return { origin.x() + rect.x, origin.y() - rect.y - rect.height, rect.width, rect.height };
}

DisplayPlace placeOf(const QScreen& screen)
{
    // The toolkit leaves a display's corner in pixels and divides only its size.
    const QRect place = screen.geometry();
    const double ratio = screen.devicePixelRatio();
    const auto pixels = [ratio](int points) { return static_cast<int>(std::lround(points * ratio)); };
    return { .pixels = { place.x(), place.y(), pixels(place.width()), pixels(place.height()) },
        .frame = toGlobal(QRectF(place), globalOrigin()),
        .ratio = ratio };
}

std::vector<DisplayPlace> displayPlaces()
{
    std::vector<DisplayPlace> displays;
    if (!qGuiApp)
        return displays;
    for (const QScreen* screen : QGuiApplication::screens())
        displays.insert(
            screen == QGuiApplication::primaryScreen() ? displays.begin() : displays.end(), placeOf(*screen));
    return displays;
}

const DisplayPlace* displayAt(std::span<const DisplayPlace> displays, Point point)
{
    return nearest(displays, [point](const DisplayPlace& display) {
        const Rect& frame = display.frame;
        return beyond({ point.x, point.y }, { frame.x, frame.y, frame.width, frame.height });
    });
}

Point fromPixels(std::span<const DisplayPlace> displays, const QPoint& pixel)
{
    const DisplayPlace* display = displayAt(displays, pixel);
    if (!display)
        return {};
    const QPointF inside = QPointF(pixel - display->pixels.topLeft()) / display->ratio;
    return { display->frame.x + inside.x(), display->frame.y + display->frame.height - inside.y() };
}

Rect fromPixels(std::span<const DisplayPlace> displays, const QRect& pixels)
{
    const DisplayPlace* display = displayAt(displays, pixels.topLeft());
    if (!display)
        return {};
    const Point corner = fromPixels(displays, pixels.topLeft());
    const QSizeF size = QSizeF(pixels.size()) / display->ratio;
    return { corner.x, corner.y - size.height(), size.width(), size.height() };
}

} // namespace platform
