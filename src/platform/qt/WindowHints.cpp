// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/WindowHints.h"

#include "platform/qt/Xcb.h"
#include "platform/qt/XcbEventFilter.h"

#include <cstdint>
#include <vector>

#include <QWidget>

namespace platform {

namespace {

/// In the place of a workspace's number: all of them.
constexpr std::uint32_t everyWorkspace = 0xFFFFFFFF;

void replace(xcb_connection_t* connection, QWidget& window, xcb_atom_t property, xcb_atom_t type,
    const std::vector<std::uint32_t>& values)
{
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
        property, type, 32, static_cast<std::uint32_t>(values.size()), values.data());
}

void setStates(QWidget& window, bool everywhere)
{
    xcb_connection_t* connection = toolkitXConnection();
    if (!connection)
        return;
    const auto atoms = internAtoms(connection,
        { "_NET_WM_STATE", "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER", "_NET_WM_STATE_ABOVE",
            "_NET_WM_STATE_STICKY", "_NET_WM_DESKTOP" });
    std::vector<std::uint32_t> states { atoms[1], atoms[2] };
    if (everywhere) {
        // Some window managers go by the state alone, others by the number alone. With the number and without
        // the state, Xfce's never shows the window at all.
        states.insert(states.end(), { atoms[3], atoms[4] });
        replace(connection, window, atoms[5], XCB_ATOM_CARDINAL, { everyWorkspace });
    }
    replace(connection, window, atoms[0], XCB_ATOM_ATOM, states);
}

} // namespace

void keepOutOfTaskbar(QWidget& window) { setStates(window, false); }

void floatEverywhere(QWidget& window) { setStates(window, true); }

} // namespace platform
