// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/ItemPlacement.h"

#include <optional>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace platform;

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

} // namespace
