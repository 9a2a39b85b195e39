// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtScreens.h"

#include "platform/qt/GlobalPoints.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

namespace platform {

QtScreens::QtScreens(X11Struts& struts)
    : struts_(struts)
{
}

std::vector<Screen> QtScreens::all() const
{
    std::vector<Screen> screens;
    if (!qGuiApp)
        return screens;
    const StrutLayout& bars = struts_.layout();
    for (const QScreen* screen : QGuiApplication::screens()) {
        const DisplayPlace place = placeOf(*screen);
        const Rect free = bars.struts.empty() ? toGlobal(QRectF(screen->availableGeometry()), globalOrigin())
                                              : fromPixels({ &place, 1 }, freeArea(place.pixels, bars));
        screens.push_back({ screen->name().toStdString(), place.frame, free });
    }
    return screens;
}

std::optional<std::size_t> QtScreens::mainIndex() const
{
    if (!qGuiApp || !QGuiApplication::primaryScreen())
        return {};
    return static_cast<std::size_t>(QGuiApplication::screens().indexOf(QGuiApplication::primaryScreen()));
}

Point QtScreens::pointer() const
{
    return qGuiApp ? toGlobal(QPointF(QCursor::pos()), globalOrigin()) : Point {};
}

} // namespace platform
