// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/NativeScreens.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include <QGuiApplication>
#include <QScreen>

namespace platform {

namespace {

/// How far a coordinate lies outside of a stretch.
double beyond(double at, double from, double length)
{
    return std::max({ from - at, at - from - length, 0.0 });
}

const NativeScreen* nearest(
    std::span<const NativeScreen> screens, const std::function<double(const NativeScreen&)>& distance)
{
    const NativeScreen* best = nullptr;
    for (const NativeScreen& screen : screens)
        if (!best || distance(screen) < distance(*best))
            best = &screen;
    return best;
}

/// The toolkit's y of the line from which global coordinates count upward.
int zeroLine()
{
    const QScreen* primary = QGuiApplication::primaryScreen();
    return primary ? primary->geometry().y() + primary->geometry().height() : 0;
}

int zeroColumn()
{
    const QScreen* primary = QGuiApplication::primaryScreen();
    return primary ? primary->geometry().x() : 0;
}

} // namespace

std::vector<NativeScreen> nativeScreens()
{
    std::vector<NativeScreen> screens;
    if (!qGuiApp)
        return screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        // The toolkit leaves a screen's corner in pixels and divides only its size.
        const QRect place = screen->geometry();
        const double ratio = screen->devicePixelRatio();
        NativeScreen native { .pixels
            = { place.x(), place.y(), static_cast<int>(std::lround(place.width() * ratio)),
                static_cast<int>(std::lround(place.height() * ratio)) },
            .frame = { static_cast<double>(place.x() - zeroColumn()),
                static_cast<double>(zeroLine() - place.y() - place.height()),
                static_cast<double>(place.width()), static_cast<double>(place.height()) },
            .ratio = ratio };
        screens.insert(screen == QGuiApplication::primaryScreen() ? screens.begin() : screens.end(), native);
    }
    return screens;
}

const NativeScreen* screenAt(std::span<const NativeScreen> screens, double x, double y)
{
    return nearest(screens, [x, y](const NativeScreen& screen) {
        const PixelRect& on = screen.pixels;
        return std::hypot(beyond(x + 0.5, on.x, on.width), beyond(y + 0.5, on.y, on.height));
    });
}

const NativeScreen* screenOf(std::span<const NativeScreen> screens, Point point)
{
    return nearest(screens, [point](const NativeScreen& screen) {
        const Rect& on = screen.frame;
        return std::hypot(beyond(point.x, on.x, on.width), beyond(point.y, on.y, on.height));
    });
}

Point globalPoint(std::span<const NativeScreen> screens, double x, double y)
{
    const NativeScreen* screen = screenAt(screens, x, y);
    if (!screen)
        return {};
    return { screen->frame.x + (x - screen->pixels.x) / screen->ratio,
        screen->frame.y + screen->frame.height - (y - screen->pixels.y) / screen->ratio };
}

Rect globalRect(std::span<const NativeScreen> screens, const PixelRect& pixels)
{
    const NativeScreen* screen = screenAt(screens, pixels.x, pixels.y);
    if (!screen)
        return {};
    const Point corner = globalPoint(screens, pixels.x, pixels.y);
    const double height = pixels.height / screen->ratio;
    return { corner.x, corner.y - height, pixels.width / screen->ratio, height };
}

QPoint toolkitPoint(Point point)
{
    return { static_cast<int>(std::lround(point.x)) + zeroColumn(),
        zeroLine() - static_cast<int>(std::lround(point.y)) };
}

Point fromToolkit(QPoint point)
{
    return { static_cast<double>(point.x() - zeroColumn()), static_cast<double>(zeroLine() - point.y()) };
}

} // namespace platform
