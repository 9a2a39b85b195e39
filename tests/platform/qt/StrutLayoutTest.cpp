// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/StrutLayout.h"

#include "platform/qt/X11Struts.h"
#include "platform/qt/Xcb.h"

#include "support/PrivateDisplay.h"

#include <gtest/gtest.h>

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

TEST(X11Struts, AreReadAnewAfterABarCameChangedOrWent)
{
    const PrivateDisplay display;
    const auto own = display.connect(), other = display.connect();
    const auto atoms
        = internAtoms(own.get(), { "_NET_CLIENT_LIST", "_NET_WM_STRUT_PARTIAL", "_NET_WM_NAME" });
    const xcb_window_t root = rootWindow(own.get()), bar = xcb_generate_id(other.get());
    xcb_create_window(other.get(), XCB_COPY_FROM_PARENT, bar, root, 0, 0, 640, 30, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const auto put
        = [&](xcb_window_t window, xcb_atom_t name, xcb_atom_t type, std::vector<std::uint32_t> values) {
              xcb_change_property(other.get(), XCB_PROP_MODE_REPLACE, window, name, type, 32,
                  static_cast<std::uint32_t>(values.size()), values.data());
          };
    const auto top = [&](std::uint32_t height) {
        put(bar, atoms[1], XCB_ATOM_CARDINAL, { 0, 0, height, 0, 0, 0, 0, 0, 0, 639, 0, 0 });
    };
    X11Struts struts(own.get());
    const auto changed = [&] {
        for (auto* one : { own.get(), other.get(), own.get() })
            roundTrip(one);
        bool any = false;
        while (auto* event = xcb_poll_for_event(own.get())) {
            any |= struts.handle(*event);
            std::free(event);
        }
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
    xcb_configure_notify_event_t resized {};
    resized.response_type = XCB_CONFIGURE_NOTIFY;
    resized.window = root;
    EXPECT_TRUE(struts.handle(reinterpret_cast<const xcb_generic_event_t&>(resized))) << "the whole screen";
}

} // namespace
