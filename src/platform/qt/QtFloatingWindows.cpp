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

void QtFloatingWindows::takeKeyboard(QWidget& window)
{
    xcb_connection_t* const connection = toolkitXConnection();
    if (!connection) {
        window.activateWindow();
        return;
    }
    // A window that said at its coming that it takes no keyboard may take it by itself when it is pressed.
    // Window managers that guard the keyboard refuse such a one when it asks.
    xcb_set_input_focus(
        connection, XCB_INPUT_FOCUS_PARENT, static_cast<xcb_window_t>(window.winId()), XCB_CURRENT_TIME);
    xcb_flush(connection);
}

} // namespace platform
