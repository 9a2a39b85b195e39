// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/X11EventMonitor.h"

#include "platform/qt/WindowShape.h"
#include "platform/qt/X11PressWatch.h"
#include "platform/qt/Xcb.h"

#include "support/PrivateDisplay.h"
#include "support/VirtualTime.h"

#include <sys/uio.h>
#include <xcb/xcbext.h>
#include <xcb/xinput.h>

#include <gtest/gtest.h>

namespace {

using namespace platform;

constexpr std::uint8_t press = 4, motion = 6;

/// Has the display act as if the user did something with the mouse.
void pretend(xcb_connection_t* connection, std::uint8_t what, std::uint8_t button, std::int16_t x = 0)
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
    } request { .type = what, .detail = button, .x = x };
    iovec parts[3] { {}, {}, { &request, sizeof request } };
    const xcb_protocol_request_t form { 1, &extension, 2, 1 };
    xcb_send_request(connection, 0, parts + 2, &form);
}

class X11PressWatchOnADisplay : public testing::Test {
protected:
    xcb_window_t makeWindow(xcb_connection_t* connection, xcb_window_t parent, std::int16_t x)
    {
        const xcb_window_t window = xcb_generate_id(connection);
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, parent, x, 0, 100, 100, 0,
            XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_map_window(connection, window);
        roundTrip(connection);
        return window;
    }

    /// How many presses on other programs were told after a click at that column.
    int toldAfterClick(std::int16_t x, std::uint8_t button = 1)
    {
        pretend(other.get(), motion, 0, x);
        pretend(other.get(), press, button);
        pretend(other.get(), press + 1, button);
        roundTrip(other.get());
        roundTrip(own.get());
        int told = 0;
        while (auto* event = xcb_poll_for_event(own.get())) {
            ++events;
            told += watch->handle(*event);
            std::free(event);
        }
        return told;
    }

    PrivateDisplay display;
    PrivateDisplay::Connection own = display.connect();
    PrivateDisplay::Connection other = display.connect();
    std::optional<X11PressWatch> watch;
    int events = 0;
};

TEST_F(X11PressWatchOnADisplay, TellsThePressesOfTwoButtonsOutsideOfOurWindowsWhileItIsAsked)
{
    ASSERT_TRUE(X11PressWatch::seesAll(own.get()));
    watch.emplace(own.get());
    const xcb_window_t root = rootWindow(own.get());
    makeWindow(own.get(), root, 0); // ours
    makeWindow(other.get(), root, 100); // theirs
    makeWindow(
        own.get(), makeWindow(other.get(), root, 200), 0); // ours inside of a frame or a tray of theirs
    makeWindow(other.get(), makeWindow(own.get(), root, 300), 0); // theirs inside of ours
    const xcb_window_t cut
        = makeWindow(own.get(), root, 400); // ours, of which the right part lets presses through
    const xcb_rectangle_t solid { 0, 0, 50, 100 };
    limitInput(own.get(), cut, { &solid, 1 });
    roundTrip(own.get());

    EXPECT_EQ(toldAfterClick(150), 0);
    EXPECT_EQ(events, 0) << "nobody asked";
    watch->start();
    for (const auto& [x, told] :
        { std::pair { 50, 0 }, { 150, 1 }, { 250, 0 }, { 350, 0 }, { 420, 0 }, { 470, 1 }, { 600, 1 } })
        EXPECT_EQ(toldAfterClick(static_cast<std::int16_t>(x)), told) << x;
    for (const auto& [button, told] : { std::pair { 1, 1 }, { 2, 0 }, { 3, 1 }, { 4, 0 }, { 8, 0 } })
        EXPECT_EQ(toldAfterClick(150, static_cast<std::uint8_t>(button)), told) << button;
    const XcbReply<xcb_grab_pointer_reply_t> grab(
        xcb_grab_pointer_reply(other.get(),
            xcb_grab_pointer(other.get(), 0, root, XCB_EVENT_MASK_BUTTON_PRESS, XCB_GRAB_MODE_ASYNC,
                XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME),
            nullptr),
        &std::free);
    EXPECT_EQ(toldAfterClick(150), 1) << "another program's menu is open";
    watch->stop();
    roundTrip(own.get()); // two programs' requests have no order of their own
    events = 0;
    EXPECT_EQ(toldAfterClick(150), 0);
    EXPECT_EQ(events, 0);
    const XcbReply<xcb_input_xi_get_selected_events_reply_t> left(
        xcb_input_xi_get_selected_events_reply(
            own.get(), xcb_input_xi_get_selected_events(own.get(), root), nullptr),
        &std::free);
    EXPECT_EQ(left->num_masks, 0);
}

TEST_F(X11PressWatchOnADisplay, ADisplayInsideAWaylandDesktopDoesNotSeeAll)
{
    ::setenv("WAYLAND_DISPLAY", "wayland-0", 1);
    EXPECT_FALSE(X11PressWatch::seesAll(own.get()));
    ::unsetenv("WAYLAND_DISPLAY");
}

TEST(X11EventMonitor, WithoutADisplayThereIsNothingToObserve)
{
    VirtualTime time;
    EXPECT_EQ(X11EventMonitor(time).monitorMouseDown([] {}), nullptr);
}

} // namespace
