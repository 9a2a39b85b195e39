// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/WindowHints.h"

#include "platform/qt/Xcb.h"
#include "platform/qt/XcbEventFilter.h"

#include <array>

#include <QWidget>

namespace platform {

void keepOutOfTaskbar(QWidget& window)
{
    xcb_connection_t* connection = toolkitXConnection();
    if (!connection)
        return;
    const auto atoms = internAtoms(
        connection, { "_NET_WM_STATE", "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER" });
    const std::array states { atoms[1], atoms[2] };
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
        atoms[0], XCB_ATOM_ATOM, 32, states.size(), states.data());
}

} // namespace platform
