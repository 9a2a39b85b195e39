// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/X11PressWatch.h"

#include "platform/qt/DisplayFacts.h"
#include "platform/qt/Xcb.h"

#include <xcb/xinput.h>

namespace platform {

namespace {

constexpr std::uint32_t leftButton = 1, rightButton = 3;

/// Deeper than windows are ever nested; they may move while we ask.
constexpr int deepest = 64;

/// The version that the toolkit asks for; another one may not ask for less over the same connection.
constexpr std::uint16_t wantedMajor = 2, wantedMinor = 4;
/// From here on raw events come also while somebody holds the pointer, as an open menu does.
constexpr std::uint16_t leastMinor = 1;

} // namespace

bool X11PressWatch::seesAll(xcb_connection_t* connection)
{
    if (!connection || isXwayland(connection))
        return false;
    const auto* extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (!extension || !extension->present)
        return false;
    const auto version = answerTo(connection,
        xcb_input_xi_query_version(connection, wantedMajor, wantedMinor), xcb_input_xi_query_version_reply);
    return version && version->major_version >= wantedMajor
        && (version->major_version > wantedMajor || version->minor_version >= leastMinor);
}

X11PressWatch::X11PressWatch(xcb_connection_t* connection)
    : connection_(connection)
{
    if (const auto* extension = xcb_get_extension_data(connection, &xcb_input_id))
        extension_ = extension->major_opcode;
}

void X11PressWatch::start() { select(XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS); }

void X11PressWatch::stop() { select(0); }

void X11PressWatch::select(std::uint32_t events)
{
    // The toolkit chooses for all devices; the masters alone are a choice of their own beside it.
    const struct {
        xcb_input_event_mask_t head { XCB_INPUT_DEVICE_ALL_MASTER, 1 };
        std::uint32_t mask = 0;
    } chosen { .mask = events };
    xcb_input_xi_select_events(connection_, rootWindow(connection_), 1, &chosen.head);
    xcb_flush(connection_);
}

bool X11PressWatch::handle(const xcb_generic_event_t& event) const
{
    if (event.response_type != XCB_GE_GENERIC)
        return false;
    const auto& raw = as<xcb_input_raw_button_press_event_t>(event);
    return raw.extension == extension_ && raw.event_type == XCB_INPUT_RAW_BUTTON_PRESS
        && (raw.detail == leftButton || raw.detail == rightButton) && !pointerIsOnOurs();
}

bool X11PressWatch::pointerIsOnOurs() const
{
    const xcb_setup_t& setup = *xcb_get_setup(connection_);
    xcb_window_t window = rootWindow(connection_);
    for (int depth = 0; depth < deepest && window != XCB_NONE; ++depth) {
        const auto pointer
            = answerTo(connection_, xcb_query_pointer(connection_, window), xcb_query_pointer_reply);
        window = pointer ? pointer->child : static_cast<xcb_window_t>(XCB_NONE);
        if (window != XCB_NONE && (window & ~setup.resource_id_mask) == setup.resource_id_base)
            return true;
    }
    return false;
}

} // namespace platform
