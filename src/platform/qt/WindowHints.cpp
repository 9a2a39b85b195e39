// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/WindowHints.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <QGuiApplication>
#include <QWidget>
#include <xcb/xcb.h>

namespace platform {

namespace {

template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name)
{
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const ReplyPointer<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

} // namespace

void keepOutOfTaskbar(QWidget& window)
{
    // The toolkit's platform without a screen claims a display too, and has none.
    const auto* display = QGuiApplication::platformName() == "xcb"
        ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>()
        : nullptr;
    if (!display)
        return;
    xcb_connection_t* connection = display->connection();
    const std::array states { atom(connection, "_NET_WM_STATE_SKIP_TASKBAR"),
        atom(connection, "_NET_WM_STATE_SKIP_PAGER") };
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
        atom(connection, "_NET_WM_STATE"), XCB_ATOM_ATOM, 32, states.size(), states.data());
}

} // namespace platform
