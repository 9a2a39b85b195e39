// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/StrutLayout.h"

#include "platform/qt/ItemPlacement.h"
#include "platform/qt/X11Struts.h"

#include "platform/qt/DisplayBench.h"

namespace {

using namespace platform;

TEST(StripOn, IsTheStretchOfTheDisplaysOwnEdge)
{
    const QRect display(1280, 200, 1000, 800);
    const QSize root(2280, 1080);
    struct Case {
        Strut strut;
        QRect strip;
    };
    for (const auto& [strut, strip] : { Case { { Edge::top, 230, 1300, 1399 }, { 1300, 200, 100, 30 } },
             { { Edge::bottom, 110, 0, 1299 }, { 1280, 970, 20, 30 } },
             { { Edge::right, 40, 900, 4000 }, { 2240, 900, 40, 100 } },
             { { Edge::left, 1300, 0, 4000 }, { 1280, 200, 20, 800 } },
             { { Edge::top, 200, 1280, 2279 }, {} } })
        EXPECT_EQ(stripOn(display, root, strut), strip) << int(strut.edge);
}

TEST(FreeArea, BarsTakeTheirRoomOnlyFromTheDisplayTheyStandOn)
{
    // Two displays side by side, the right one higher.
    const QRect left(0, 280, 1280, 800), right(1280, 0, 1920, 1080);
    using Figures = std::vector<std::uint32_t>;
    struct Case {
        const char* what;
        std::vector<Figures> windows;
        QRect onLeft, onRight;
    };
    for (const auto& [what, windows, onLeft, onRight] :
        std::vector<Case> {
            { "none", {}, left, right },
            { "top of the right one", { { 0, 0, 28, 0, 0, 0, 0, 0, 1280, 3199, 0, 0 } }, left,
                { 1280, 28, 1920, 1052 } },
            { "top of the left one, below the edge of the whole",
                { { 0, 0, 310, 0, 0, 0, 0, 0, 0, 1279, 0, 0 } }, { 0, 310, 1280, 770 }, right },
            { "bottom of both, in two windows",
                { { 0, 0, 0, 40, 0, 0, 0, 0, 0, 0, 0, 1279 }, { 0, 0, 0, 50, 0, 0, 0, 0, 0, 0, 1280, 3199 } },
                { 0, 280, 1280, 760 }, { 1280, 0, 1920, 1030 } },
            { "left of the left one", { { 60, 0, 0, 0, 280, 1079, 0, 0, 0, 0, 0, 0 } },
                { 60, 280, 1220, 800 }, right },
            { "left of the right one, across the left one", { { 1340, 0, 0, 0, 0, 1079, 0, 0, 0, 0, 0, 0 } },
                left, { 1340, 0, 1860, 1080 } },
            { "right, without a stretch", { { 0, 64, 0, 0 } }, left, { 1280, 0, 1856, 1080 } },
            { "bottom of both, the stretch left out", { { 0, 0, 0, 40, 0, 0, 0, 0, 0, 0, 0, 0 } },
                { 0, 280, 1280, 760 }, { 1280, 0, 1920, 1040 } },
            { "a stretch that ends before it starts", { { 0, 0, 28, 0, 0, 0, 0, 0, 3199, 1280, 0, 0 } }, left,
                right },
            { "two at one edge", { { 0, 0, 0, 30 }, { 0, 0, 0, 44 } }, { 0, 280, 1280, 756 },
                { 1280, 0, 1920, 1036 } },
            { "a stretch that ends beside it", { { 100, 0, 0, 0, 0, 279, 0, 0, 0, 0, 0, 0 } }, left, right },
            { "one that reaches its last row", { { 100, 0, 0, 0, 0, 280, 0, 0, 0, 0, 0, 0 } },
                { 100, 280, 1180, 800 }, right },
            { "absurd", { { 0, 0, 0, 4294967295U }, { 0, 0, 540, 0 }, { 1, 2, 3 } }, { 0, 540, 1280, 540 },
                right },
        }) {
        StrutLayout bars { .root = { 3200, 1080 }, .struts = {} };
        for (const Figures& figures : windows)
            std::ranges::copy(strutsFrom(figures), std::back_inserter(bars.struts));
        EXPECT_EQ(freeArea(left, bars), onLeft) << what;
        EXPECT_EQ(freeArea(right, bars), onRight) << what;
    }
}

TEST(GuessedFrame, IsAtTheLastPressElseAtABarsEndElseAtTheUpperRight)
{
    // A dense display, and a plain one at its right that hangs 200 pixels lower.
    const std::vector<DisplayPlace> displays { { { 0, 0, 2880, 1800 }, { 0, 0, 1440, 900 }, 2 },
        { { 2880, 200, 1000, 800 }, { 2880, -100, 1000, 800 }, 1 } };
    const Strut bottom { Edge::bottom, 60, 0, 2879 };
    const Strut inner { Edge::top, 230, 2880, 3879 };
    const Strut side { Edge::right, 40, 0, 1799 };
    struct Case {
        std::vector<Strut> bars;
        std::optional<Point> press;
        Rect frame;
        std::optional<double> length = 64;
    };
    const Case cases[] {
        { {}, {}, { 1376, 876, 64, 24 } },
        { { bottom }, {}, { 1376, 0, 64, 30 } },
        { { bottom, inner }, {}, { 3816, 670, 64, 30 } },
        { { bottom }, {}, { 1410, 0, 30, 30 }, std::nullopt },
        { {}, {}, { 1416, 876, 24, 24 }, std::nullopt },
        { { side }, {}, { 3840, -100, 40, 40 } },
        { { bottom }, Point { 700, 3 }, { 685, 0, 30, 30 } },
        { { bottom }, Point { 1439, 20 }, { 1410, 0, 30, 30 } },
        { { inner }, Point { 3000, 690 }, { 2985, 670, 30, 30 } },
        { {}, Point { 3000, 699 }, { 2988, 676, 24, 24 } },
    };
    for (const Case& c : cases) {
        const Rect frame
            = guessedFrame(displays, { .root = { 3880, 1800 }, .struts = c.bars }, c.press, c.length);
        EXPECT_EQ(frame, c.frame) << frame.x << " " << frame.y << " " << frame.width << " " << frame.height;
    }
}

TEST(MenuCorner, IsBelowTheItemAndTheMenuStandsAboveItInTheLowerHalf)
{
    const Rect screen { 0, 0, 1440, 900 };
    EXPECT_EQ(menuCorner({ 1300, 872, 64, 28 }, screen, 300), (Point { 1300, 870 }));
    EXPECT_EQ(menuCorner({ 1300, 0, 64, 30 }, screen, 300), (Point { 1300, 332 }));
}

using X11StrutsOnADisplay = DisplayBench;

TEST_F(X11StrutsOnADisplay, AreReadAnewAfterABarCameChangedOrWent)
{
    const auto atoms
        = internAtoms(own.get(), { "_NET_CLIENT_LIST", "_NET_WM_STRUT_PARTIAL", "_NET_WM_NAME" });
    const xcb_window_t root = rootWindow(own.get()), bar = makeWindow(other.get(), { 0, 0, 640, 30 });
    const auto put = [&](xcb_window_t window, xcb_atom_t name, xcb_atom_t type,
                         const std::vector<std::uint32_t>& values) {
        putProperty(other.get(), window, name, type, values);
    };
    const auto top = [&](std::uint32_t height) {
        put(bar, atoms[1], XCB_ATOM_CARDINAL, { 0, 0, height, 0, 0, 0, 0, 0, 0, 639, 0, 0 });
    };
    X11Struts struts(own.get());
    const auto changed = [&] {
        bool any = false;
        settle([&](const xcb_generic_event_t& event) { any |= struts.handle(event); });
        return any;
    };
    const Strut thin { Edge::top, 30, 0, 639 }, thick { Edge::top, 44, 0, 639 };

    EXPECT_EQ(struts.layout().root, QSize(640, 480));
    EXPECT_TRUE(struts.layout().struts.empty());
    top(30);
    put(root, atoms[0], XCB_ATOM_WINDOW, { bar, 0x7777777 });
    EXPECT_TRUE(changed());
    EXPECT_EQ(struts.layout().struts, std::vector { thin }) << "a listed window that has gone is passed over";
    put(bar, atoms[2], XCB_ATOM_STRING, { 1 });
    EXPECT_FALSE(changed());
    top(44);
    EXPECT_TRUE(changed());
    EXPECT_EQ(struts.layout().struts, std::vector { thick });
    put(root, atoms[0], XCB_ATOM_WINDOW, {});
    EXPECT_TRUE(changed());
    EXPECT_TRUE(struts.layout().struts.empty());
    const xcb_configure_notify_event_t resized { .response_type = XCB_CONFIGURE_NOTIFY, .window = root };
    EXPECT_TRUE(struts.handle(reinterpret_cast<const xcb_generic_event_t&>(resized))) << "the whole screen";
}

} // namespace
