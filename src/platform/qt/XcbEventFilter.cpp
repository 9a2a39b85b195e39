// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/XcbEventFilter.h"

#include <utility>

#include <QCoreApplication>
#include <QGuiApplication>

namespace platform {

xcb_connection_t* toolkitXConnection()
{
    // The toolkit's platform without a screen claims a display too, and has none.
    if (!qGuiApp || QGuiApplication::platformName() != "xcb")
        return nullptr;
    const auto* display = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return display ? display->connection() : nullptr;
}

XcbEventFilter::XcbEventFilter(std::function<void(const xcb_generic_event_t&)> see)
    : see_(std::move(see))
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

bool XcbEventFilter::nativeEventFilter(const QByteArray& kind, void* message, qintptr*)
{
    if (kind == "xcb_generic_event_t")
        see_(*static_cast<const xcb_generic_event_t*>(message));
    return false;
}

} // namespace platform
