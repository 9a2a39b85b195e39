// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtFloatingWindows.h"

#include "platform/qt/WindowHints.h"
#include "platform/qt/WindowShape.h"
#include "platform/qt/XcbEventFilter.h"

#include <cmath>

#include <QWidget>

namespace platform {

void QtFloatingWindows::prepare(QWidget& window, double cornerRadius)
{
    xcb_connection_t* const connection = toolkitXConnection();
    if (!connection)
        return;
    floatEverywhere(window);
    const double ratio = window.devicePixelRatioF();
    const auto pixels = [ratio](double points) { return static_cast<int>(std::lround(points * ratio)); };
    cutWindow(connection, static_cast<xcb_window_t>(window.winId()),
        roundedStripes(pixels(window.width()), pixels(window.height()), pixels(cornerRadius)));
}

} // namespace platform
