// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/DisplayProbe.h"

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace platform {

namespace {

bool isSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value && *value;
}

bool xDisplayAnswers()
{
    if (!isSet("DISPLAY"))
        return false;
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), &xcb_disconnect);
    return xcb_connection_has_error(connection.get()) == 0;
}

} // namespace

std::string chooseQtPlatform()
{
    if (xDisplayAnswers())
        return "xcb";
    return isSet("WAYLAND_DISPLAY") ? "wayland" : "offscreen";
}

} // namespace platform
