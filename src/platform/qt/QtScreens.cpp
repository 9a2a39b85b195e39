// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtScreens.h"

#include "platform/qt/GlobalPoints.h"
#include "platform/qt/X11Struts.h"
#include "platform/qt/XcbEventFilter.h"

#include <cmath>

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

namespace platform {

class QtScreens::Bars {
public:
    explicit Bars(xcb_connection_t* connection)
        : struts_(connection)
        , filter_([this](const xcb_generic_event_t& event) { struts_.handle(event); })
    {
    }

    [[nodiscard]] QRectF freeOf(const QScreen& screen)
    {
        // A display's corner is at its pixel in the toolkit's coordinates; its size is divided by the scale.
        const QRect logical = screen.geometry();
        const double ratio = screen.devicePixelRatio();
        const auto pixels = [ratio](int points) { return static_cast<int>(std::lround(points * ratio)); };
        const QRect display(logical.x(), logical.y(), pixels(logical.width()), pixels(logical.height()));
        const QRect free = freeArea(display, struts_.rootSize(), struts_.all());
        return { logical.x() + (free.x() - display.x()) / ratio,
            logical.y() + (free.y() - display.y()) / ratio, free.width() / ratio, free.height() / ratio };
    }

    [[nodiscard]] bool isEmpty() { return struts_.all().empty(); }

private:
    X11Struts struts_;
    XcbEventFilter filter_;
};

QtScreens::QtScreens() = default;

QtScreens::~QtScreens() = default;

std::vector<Screen> QtScreens::all() const
{
    std::vector<Screen> screens;
    if (!qGuiApp)
        return screens;
    if (!bars_)
        if (xcb_connection_t* connection = toolkitXConnection())
            bars_ = std::make_unique<Bars>(connection);
    const QPointF origin = globalOrigin();
    for (const QScreen* screen : QGuiApplication::screens()) {
        const bool byBars = bars_ && !bars_->isEmpty();
        const QRectF free = byBars ? bars_->freeOf(*screen) : QRectF(screen->availableGeometry());
        screens.push_back({ screen->name().toStdString(), toGlobal(QRectF(screen->geometry()), origin),
            toGlobal(free, origin) });
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
