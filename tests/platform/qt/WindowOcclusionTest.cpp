// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/X11WindowOcclusion.h"

#include "platform/qt/X11CoverTracker.h"

#include "platform/qt/DisplayBench.h"
#include "support/VirtualTime.h"

namespace {

using namespace platform;

/// A window that is followed, and another program at the same display.
class X11CoverTrackerOnADisplay : public DisplayBench {
protected:
    /// Whether the window is covered once both programs' wishes are done. Every change is told, and no other.
    bool coveredNow()
    {
        settle([this](const xcb_generic_event_t& event) {
            exposed |= event.response_type == XCB_EXPOSE;
            said ^= tracker.handle(event) == window;
        });
        EXPECT_EQ(said, tracker.covered(window));
        return tracker.covered(window);
    }

    void move(xcb_window_t which, std::int32_t x)
    {
        xcb_configure_window(other.get(), which, XCB_CONFIG_WINDOW_X, &x);
    }

    void put(xcb_atom_t property, xcb_atom_t type, const std::vector<std::uint32_t>& values) const
    {
        putProperty(own.get(), window, property, type, values);
    }

    X11CoverTracker tracker { own.get() };
    xcb_window_t window = makeWindow(own.get(), { 50, 50, 100, 100 }, XCB_NONE, XCB_EVENT_MASK_EXPOSURE);
    bool said = false;
    bool exposed = false;
};

TEST_F(X11CoverTrackerOnADisplay, AWindowIsCoveredOnlyWhileItIsShownAndOthersHideAllOfIt)
{
    tracker.watch(window);
    EXPECT_FALSE(coveredNow());
    EXPECT_TRUE(exposed) << "the events asked for before still come";
    makeWindow(other.get(), { -200, -200, 300, 300 });
    EXPECT_FALSE(coveredNow()) << "a quarter of it shows";
    const xcb_window_t wide = makeWindow(other.get(), { 40, 40, 300, 300 });
    EXPECT_TRUE(coveredNow());
    move(wide, 101);
    EXPECT_FALSE(coveredNow()) << "a column of pixels shows";
    move(wide, 40);
    EXPECT_TRUE(coveredNow());

    const std::uint32_t chosen = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(own.get(), window, XCB_CW_EVENT_MASK, &chosen);
    put(internAtoms(own.get(), { "_NET_WM_WINDOW_TYPE" })[0], XCB_ATOM_ATOM, { 1 });
    EXPECT_FALSE(coveredNow()) << "the toolkit chose its events anew: nothing is known";
    move(wide, 101);
    EXPECT_FALSE(coveredNow());
    move(wide, 40);
    EXPECT_TRUE(coveredNow()) << "ours come again";

    xcb_unmap_window(own.get(), window);
    EXPECT_FALSE(coveredNow()) << "what was known ends with the showing";
    xcb_map_window(own.get(), window);
    EXPECT_TRUE(coveredNow());
    xcb_destroy_window(own.get(), window);
    EXPECT_FALSE(coveredNow());
}

TEST_F(X11CoverTrackerOnADisplay, AWindowThatTheWindowManagerPutAwayIsCovered)
{
    const auto atoms = internAtoms(
        own.get(), { "_NET_WM_STATE", "_NET_WM_STATE_HIDDEN", "_NET_WM_STATE_FOCUSED", "WM_STATE" });
    const xcb_atom_t net = atoms[0], hidden = atoms[1], focused = atoms[2], state = atoms[3];
    put(net, XCB_ATOM_ATOM, { focused, hidden });
    tracker.watch(window);
    EXPECT_TRUE(said = tracker.covered(window)) << "known from the start";

    for (const auto& [property, type, values, covered] :
        std::vector<std::tuple<xcb_atom_t, xcb_atom_t, std::vector<std::uint32_t>, bool>> {
            { net, XCB_ATOM_ATOM, { focused }, false },
            { state, state, { 3, 0 }, true },
            { state, state, { 1, 0 }, false },
            { net, XCB_ATOM_CARDINAL, { hidden }, false },
            { state, state, {}, false },
            { net, XCB_ATOM_ATOM, { hidden }, true },
        }) {
        put(property, type, values);
        EXPECT_EQ(coveredNow(), covered);
    }
    xcb_delete_property(own.get(), window, net);
    EXPECT_FALSE(coveredNow());
}

TEST(X11WindowOcclusion, WithoutADisplayNothingIsCoveredAndObservingIsHarmless)
{
    VirtualTime time;
    auto occlusion = std::make_unique<X11WindowOcclusion>(time);
    const auto one = occlusion->observe(0, [] { ADD_FAILURE(); });
    auto two = occlusion->observe(77, [] { ADD_FAILURE(); });
    EXPECT_FALSE(occlusion->covered(77));
    two.reset();
    occlusion.reset(); // before the one that observes it
}

} // namespace
