// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelScreen.h"

#include "support/FakeScreens.h"

#include <optional>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using PanelScreen::BarItem;
using PanelScreen::Corner;
using platform::Point;
using platform::Rect;

TEST(PanelScreen, ThePointersDisplayWinsThenTheMainOneThenTheOneAtTheOrigin)
{
    const Rect left { -1920, 0, 1920, 1080 };
    const Rect primary { 0.5, -0.5, 1440, 900 };
    const Rect right { 1440.5, 0, 1280, 720 };
    const Point nowhere { 9999, 9999 };
    struct Case {
        const char* what;
        Point pointer;
        std::vector<Rect> frames;
        std::optional<std::size_t> main;
        std::optional<Point> item;
        std::optional<std::size_t> index;
        bool fromItem;
    };
    const Case cases[] {
        { "no display", { 1, 1 }, {}, 0, Point { 1, 1 }, {}, false },
        { "item on another display", { 1500, 9 }, { primary, right }, 0, Point { 20, 20 }, 1, false },
        { "item on the same", { 30, 30 }, { primary, right }, 1, Point { 20, 20 }, 0, true },
        { "no item", { 30, 30 }, { primary, right }, 1, {}, 0, false },
        { "pointer nowhere", nowhere, { left, primary, right }, 2, {}, 2, false },
        { "main out of range", nowhere, { left, right, primary }, 3, {}, 2, false },
        { "nearly at the origin", nowhere, { left, right, primary }, {}, {}, 2, false },
        { "nothing at the origin", nowhere, { left, right }, {}, Point { -5, 5 }, 0, true },
        { "left edge is inside", { -1920, 5 }, { primary, left }, 0, {}, 1, false },
        { "right edge isn't", { 1440.5, 5 }, { primary, right }, 0, {}, 1, false },
        { "upper edge is inside", { 5, 899.5 }, { right, primary }, 0, {}, 1, false },
        { "lower edge isn't", { 1500, 0 }, { primary, right }, 0, {}, 0, false },
    };
    for (const Case& one : cases) {
        std::vector<PanelScreen::Display> displays;
        for (const Rect& frame : one.frames)
            displays.push_back({ frame, { frame.x, frame.y, 7, 7 } });
        const auto choice = PanelScreen::choose(one.pointer, displays, one.main, one.item);
        ASSERT_EQ(choice.has_value(), one.index.has_value()) << one.what;
        if (!choice)
            continue;
        EXPECT_EQ(choice->index, *one.index) << one.what;
        if (one.fromItem)
            EXPECT_EQ(choice->anchor, PanelScreen::Anchor(BarItem {})) << one.what;
        else
            EXPECT_EQ(choice->anchor, PanelScreen::Anchor(Corner { displays[*one.index].visible }))
                << one.what;
    }
}

TEST(PanelScreen, AnAnchorLetsThePanelEndTwentyFourPointsFromTheFreeAreasEdges)
{
    FakeScreens screens;
    screens.screens = { { "A", { 0, 0, 1000, 800 }, { 0, 0, 1000, 800 } },
        { "B", { 1000, 0, 2000, 1000 }, { 1000, 50, 1960, 900 } } };
    screens.main = 1;
    const Rect area { 10, 20, 990, 700 };
    EXPECT_EQ(PanelScreen::hiddenModeAnchor(screens, area), (Rect { 595, 718, 2, 2 }));
    EXPECT_EQ(PanelScreen::hiddenModeAnchor(screens, {}), (Rect { 2555, 948, 2, 2 }));
    EXPECT_EQ(PanelScreen::testbedAnchor(screens), (Rect { 2555, 72, 2, 2 }));
    screens.main.reset();
    EXPECT_EQ(PanelScreen::hiddenModeAnchor(screens, {}), (Rect { 595, 798, 2, 2 }));
    screens.screens.clear();
    EXPECT_EQ(PanelScreen::testbedAnchor(screens), (Rect { 1035, 22, 2, 2 })) << "a usual display's";
}

} // namespace
