// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/qt/Xcb.h"

#include "support/PrivateDisplay.h"

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>
#include <sys/uio.h>
#include <xcb/xcbext.h>

/// A window that is shown.
inline xcb_window_t makeWindow(xcb_connection_t* connection, const xcb_rectangle_t& place,
    xcb_window_t parent = XCB_NONE, std::uint32_t events = 0)
{
    const xcb_window_t window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window,
        parent == XCB_NONE ? platform::rootWindow(connection) : parent, place.x, place.y, place.width,
        place.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    xcb_map_window(connection, window);
    return window;
}

inline void putProperty(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t name, xcb_atom_t type,
    const std::vector<std::uint32_t>& values)
{
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, name, type, 32,
        static_cast<std::uint32_t>(values.size()), values.data());
}

/// This program and another one at a display of the test's own.
class DisplayBench : public testing::Test {
protected:
    /// Gives each event of ours to the handler, once the display has done what both programs asked.
    template <typename Handle>
    void settle(Handle handle)
    {
        for (auto* one : { own.get(), other.get(), own.get() })
            roundTrip(one);
        while (auto* event = xcb_poll_for_event(own.get())) {
            handle(*event);
            std::free(event);
        }
    }

    /// Has the display act as if the user did that with a key, a button or the mouse.
    void pretend(std::uint8_t what, std::uint8_t detail, std::int16_t x = 0) const
    {
        static xcb_extension_t extension { "XTEST", 0 };
        struct {
            std::uint8_t major = 0, minor = 2;
            std::uint16_t length = 9;
            std::uint8_t type = 0, detail = 0;
            std::uint16_t pad0 = 0;
            std::uint32_t time = 0, root = 0, pad1[2] {};
            std::int16_t x = 0, y = 50;
            std::uint32_t pad2[2] {};
        } request { .type = what, .detail = detail, .x = x };
        iovec parts[3] { {}, {}, { &request, sizeof request } };
        const xcb_protocol_request_t form { 1, &extension, 2, 1 };
        xcb_send_request(other.get(), 0, parts + 2, &form);
    }

    const PrivateDisplay display;
    const PrivateDisplay::Connection own = display.connect();
    const PrivateDisplay::Connection other = display.connect();
};
