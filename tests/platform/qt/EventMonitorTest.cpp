// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/X11EventMonitor.h"

#include "platform/qt/WindowShape.h"
#include "platform/qt/X11PressWatch.h"

#include "platform/qt/DisplayBench.h"
#include "support/VirtualTime.h"

#include <xcb/xinput.h>

namespace {

using namespace platform;

class X11PressWatchOnADisplay : public DisplayBench {
protected:
    xcb_window_t makeWindow(
        xcb_connection_t* connection, std::int16_t x, xcb_window_t parent = XCB_NONE) const
    {
        const xcb_window_t window = ::makeWindow(connection, { x, 0, 100, 100 }, parent);
        roundTrip(connection);
        return window;
    }
    /// How many presses on other programs were told after a click at that column.
    int toldAfterClick(std::int16_t x, std::uint8_t button = 1)
    {
        pretend(XCB_MOTION_NOTIFY, 0, x);
        pretend(XCB_BUTTON_PRESS, button);
        pretend(XCB_BUTTON_RELEASE, button);
        int told = 0;
        settle([&](const xcb_generic_event_t& event) {
            ++events;
            told += watch->handle(event);
        });
        return told;
    }

    std::optional<X11PressWatch> watch;
    int events = 0;
};

TEST_F(X11PressWatchOnADisplay, TellsThePressesOfTwoButtonsOutsideOfOurWindowsWhileItIsAsked)
{
    ASSERT_TRUE(X11PressWatch::seesAll(own.get()));
    watch.emplace(own.get());
    const xcb_window_t root = rootWindow(own.get());
    makeWindow(own.get(), 0); // ours
    makeWindow(other.get(), 100); // theirs
    makeWindow(own.get(), 0, makeWindow(other.get(), 200)); // ours inside of a frame or a tray of theirs
    makeWindow(other.get(), 0, makeWindow(own.get(), 300)); // theirs inside of ours
    const xcb_window_t cut = makeWindow(own.get(), 400); // ours, whose right part lets presses through
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
    const auto grab = answerTo(other.get(),
        xcb_grab_pointer(other.get(), 0, root, XCB_EVENT_MASK_BUTTON_PRESS, XCB_GRAB_MODE_ASYNC,
            XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME),
        xcb_grab_pointer_reply);
    EXPECT_EQ(toldAfterClick(150), 1) << "another program's menu is open";
    watch->stop();
    roundTrip(own.get()); // two programs' requests have no order of their own
    events = 0;
    EXPECT_EQ(toldAfterClick(150), 0);
    EXPECT_EQ(events, 0);
    const auto left = answerTo(
        own.get(), xcb_input_xi_get_selected_events(own.get(), root), xcb_input_xi_get_selected_events_reply);
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
