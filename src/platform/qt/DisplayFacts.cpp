// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/DisplayFacts.h"

#include "platform/qt/Xcb.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <QGuiApplication>
#include <QScreen>
#include <QString>

namespace platform {

bool hasCompositor(xcb_connection_t* connection)
{
    return selectionOwner(connection, internAtoms(connection, { "_NET_WM_CM_S0" })[0]) != XCB_NONE;
}

bool isXwayland(xcb_connection_t* connection)
{
    if (const char* socket = std::getenv("WAYLAND_DISPLAY"); socket && *socket)
        return true;
    // What the bus or a service started may lack the variable. Newer servers have an extension of this name,
    // the older ones call their displays by it.
    constexpr std::string_view name = "XWAYLAND";
    const QScreen* const display = qGuiApp ? QGuiApplication::primaryScreen() : nullptr;
    if (display && display->name().startsWith(name.data()))
        return true;
    const auto reply = answerTo(connection,
        xcb_query_extension(connection, static_cast<std::uint16_t>(name.size()), name.data()),
        xcb_query_extension_reply);
    return reply && reply->present;
}

bool isWaylandDesktop(xcb_connection_t* connection)
{
    if (connection)
        return isXwayland(connection);
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        || qEnvironmentVariable("XDG_SESSION_TYPE") == "wayland";
}

std::string windowManagerName(xcb_connection_t* connection)
{
    constexpr std::uint32_t longestName = 64; // of four bytes each
    const auto atoms = internAtoms(connection, { "_NET_SUPPORTING_WM_CHECK", "_NET_WM_NAME" });
    const auto check = answerTo(connection,
        xcb_get_property(connection, 0, rootWindow(connection), atoms[0], XCB_ATOM_WINDOW, 0, 1),
        xcb_get_property_reply);
    const auto window = figuresOf(check);
    if (window.empty())
        return {};
    const auto name = answerTo(connection,
        xcb_get_property(connection, 0, window[0], atoms[1], XCB_ATOM_ANY, 0, longestName),
        xcb_get_property_reply);
    if (!name || name->format != 8)
        return {};
    return { static_cast<const char*>(xcb_get_property_value(name.get())),
        static_cast<std::size_t>(xcb_get_property_value_length(name.get())) };
}

} // namespace platform
