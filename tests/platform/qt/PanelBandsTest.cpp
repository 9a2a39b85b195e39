// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/PanelBands.h"

#include "platform/qt/ItemMenu.h"

#include "support/PrivateDisplay.h"

#include "platform/qt/Xcb.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace platform;
using Edge = PanelBand::Edge;

TEST(PanelBands, AStrutGivesTheStripThatItsWindowKeeps)
{
    struct Case {
        std::vector<std::uint32_t> strut;
        std::vector<PanelBand> bands;
    };
    const Case cases[] {
        { { 0, 0, 28, 0, 0, 0, 0, 0, 100, 899, 0, 0 }, { { Edge::top, { 100, 0, 800, 28 } } } },
        { { 0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 0, 1439 }, { { Edge::bottom, { 0, 870, 1440, 30 } } } },
        { { 0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 0, 0 }, { { Edge::bottom, { 0, 870, 1440, 30 } } } },
        { { 0, 40, 20, 0 }, { { Edge::right, { 1400, 0, 40, 900 } }, { Edge::top, { 0, 0, 1440, 20 } } } },
        { { 0, 0, 4000000000, 0 }, {} },
        { { 0, 0, 28, 0, 0, 0, 0, 0, 900, 100, 0, 0 }, {} },
        { { 0, 0, 28, 0, 0, 0, 0, 0, 2000, 3000, 0, 0 }, {} },
        { { 28 }, {} },
    };
    for (const Case& c : cases)
        EXPECT_EQ(panelBands(c.strut, 1440, 900), c.bands) << testing::PrintToString(c.strut);
}

TEST(PanelBands, TheItemIsGuessedAtTheLastPressElseAtAPanelsEndElseAtTheUpperRight)
{
    // A dense screen, and a plain one at its right that hangs 200 pixels lower.
    const std::vector<NativeScreen> screens { { { 0, 0, 2880, 1800 }, { 0, 0, 1440, 900 }, 2 },
        { { 2880, 200, 1000, 800 }, { 2880, -100, 1000, 800 }, 1 } };
    const PanelBand bottom { Edge::bottom, { 0, 1740, 2880, 60 } };
    const PanelBand inner { Edge::top, { 2880, 0, 1000, 230 } };
    const PanelBand side { Edge::right, { 3840, 0, 40, 1800 } };
    struct Case {
        std::vector<PanelBand> bands;
        std::optional<Point> press;
        Rect frame;
    };
    const Case cases[] {
        { {}, {}, { 1376, 876, 64, 24 } },
        { { bottom }, {}, { 1376, 0, 64, 30 } },
        { { bottom, inner }, {}, { 3816, 670, 64, 30 } },
        { { side }, {}, { 3840, -100, 40, 40 } },
        { { bottom }, Point { 700, 3 }, { 685, 0, 30, 30 } },
        { { bottom }, Point { 1439, 20 }, { 1410, 0, 30, 30 } },
        { {}, Point { 3000, 699 }, { 2988, 676, 24, 24 } },
    };
    for (const Case& c : cases) {
        const Rect frame = guessedFrame(screens, c.bands, c.press, 64);
        EXPECT_EQ(frame, c.frame) << frame.x << " " << frame.y << " " << frame.width << " " << frame.height;
    }
}

TEST(PanelBands, TheDisplayIsAskedAgainOnlyAfterItsWindowsChanged)
{
    const PrivateDisplay display;
    const auto own = display.connect();
    const auto other = display.connect();
    X11PanelBands bands(own.get());
    EXPECT_TRUE(bands.bands().empty());
    const auto atoms = internAtoms(other.get(), { "_NET_CLIENT_LIST", "_NET_WM_STRUT" });
    const xcb_window_t root = rootWindow(other.get());
    const xcb_window_t panel = xcb_generate_id(other.get());
    xcb_create_window(other.get(), XCB_COPY_FROM_PARENT, panel, root, 0, 0, 640, 25, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const std::array<std::uint32_t, 4> strut { 0, 0, 25, 0 };
    xcb_change_property(other.get(), XCB_PROP_MODE_REPLACE, panel, atoms[1], XCB_ATOM_CARDINAL, 32,
        strut.size(), strut.data());
    // One listed window has gone already.
    const std::array<std::uint32_t, 2> listed { panel + 1, panel };
    xcb_change_property(other.get(), XCB_PROP_MODE_REPLACE, root, atoms[0], XCB_ATOM_WINDOW, 32,
        listed.size(), listed.data());
    roundTrip(other.get());
    EXPECT_TRUE(bands.bands().empty()) << "nothing has told of the change yet";
    roundTrip(own.get());
    while (auto* event = xcb_poll_for_event(own.get())) {
        const XcbReply<xcb_generic_event_t> held(event, &std::free);
        bands.handle(*event);
    }
    EXPECT_EQ(bands.bands(), (std::vector<PanelBand> { { Edge::top, { 0, 0, 640, 25 } } }));
}

TEST(ItemMenu, HangsBelowTheItemAndStandsAboveItInTheLowerHalf)
{
    const Rect screen { 0, 0, 1440, 900 };
    EXPECT_EQ(menuCorner({ 1300, 872, 64, 28 }, screen, 300), (Point { 1300, 870 }));
    EXPECT_EQ(menuCorner({ 1300, 0, 64, 30 }, screen, 300), (Point { 1300, 332 }));
}

} // namespace
