// SPDX-License-Identifier: Apache-2.0
#include "BarBench.h"

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace std::chrono_literals;

TEST(BarStateFile, TellsOneLineAndWritesItOnlyWhenSomethingChanged)
{
    BarBench bench;
    bench.stateFile.writeBarState();
    EXPECT_EQ(bench.files.writes, 0) << "there is no item yet";
    bench.screens.screens.push_back({ "tall", { 1512, 0, 1080.9, 1920 }, { 1512, 0, 1080.9, 1920 } });
    bench.bar.placement = { .frame = { 1204.9, 960.2, 38, 20 }, .seen = true };
    bench.setUp();
    EXPECT_EQ(bench.state(),
        R"({ "autosave": "dev.quent.ostrel.status-item.v3", "mode": "mark", "isVisible": true, )"
        R"("hasWindow": true, "frame": [1204, 960, 38, 20], "looksPainted": true, )"
        R"("panelScreen": "not opened yet", "preferredPosition": null, "screenWidth": 1512, )"
        R"("length": 38, "stamp": "2023-11-14T22:13:20Z" })"
        "\n");
    bench.time.advance(5s);
    bench.item.updateStatusButton();
    EXPECT_EQ(bench.files.writes, 1);
    bench.files.contents.clear();
    bench.item.updateStatusButton();
    EXPECT_TRUE(bench.state().ends_with("\"stamp\": \"2023-11-14T22:13:25Z\" }\n")) << "it was deleted";

    bench.stateFile.setLastPanelScreen("27\" \\ · corner");
    bench.defaults.setNumber("NSStatusItem Preferred Position dev.quent.ostrel.status-item.v3", -312.7);
    bench.settings.barDisplayMode = BarDisplayMode::hidden;
    bench.screens.main = 1;
    bench.item.updateStatusButton();
    EXPECT_NE(
        bench.state().find(R"("mode": "hidden", "isVisible": false, "hasWindow": false, "frame": null, )"
                           R"("looksPainted": false, "panelScreen": "27' \\ · corner", )"
                           R"("preferredPosition": -312, "screenWidth": 1080, "length": 16, )"),
        std::string::npos)
        << bench.state();
    bench.screens.main = 2;
    bench.item.updateStatusButton();
    EXPECT_NE(bench.state().find("\"screenWidth\": 0,"), std::string::npos);
}

TEST(BarStateFile, AnItemLooksPaintedInsideABarOfItsDisplay)
{
    const platform::Rect whole { 0, 0, 1000, 800 };
    const platform::Screen top { "top", whole, { 0, 0, 1000, 770 } };
    const platform::Screen bottom { "bottom", whole, { 0, 30, 1000, 770 } };
    const platform::Screen sides { "sides", whole, { 40, 0, 920, 800 } };
    const platform::Screen bare { "bare", whole, { 0, 0, 1000, 800 - 1e-9 } };
    const platform::Screen right { "right", { 1000, 0, 500, 500 }, { 1000, 0, 500, 480 } };
    struct Case {
        const char* told;
        std::vector<platform::Screen> screens;
        platform::Rect rect;
        bool painted;
    };
    const Case cases[] {
        { "a point out at each side", { top }, { 900, 769, 38, 32 }, true },
        { "two points over the display", { top }, { 900, 770, 38, 32 }, false },
        { "two points below the bar", { top }, { 900, 768, 38, 30 }, false },
        { "without a width", { top }, { 900, 770, 0, 30 }, false },
        { "half off the right edge", { top }, { 981, 770, 38, 30 }, false },
        { "at an edge without a bar", { top }, { 900, 0, 38, 30 }, false },
        { "in a bar at the bottom", { bottom }, { 900, -1, 38, 32 }, true },
        { "over a bar at the bottom", { bottom }, { 900, 2, 38, 30 }, false },
        { "in a bar at the left", { sides }, { -1, 100, 42, 30 }, true },
        { "in a bar at the right", { sides }, { 959, 100, 42, 30 }, true },
        { "beside it", { sides }, { 958, 100, 40, 30 }, false },
        { "under the end of a side's bar", { sides }, { 0, -1, 40, 30 }, false },
        { "at any edge without bars", { bare }, { 100, 0, 32, 32 }, true },
        { "far from the edges", { bare }, { 100, 100, 32, 32 }, false },
        { "on the second display", { top, right }, { 1400, 480, 38, 20 }, true },
        { "where only the first has a bar", { top, right }, { 1400, 770, 38, 30 }, false },
        { "without a display", {}, { 900, 770, 38, 30 }, false },
    };
    for (const Case& c : cases) {
        EXPECT_EQ(looksPainted({ .frame = c.rect, .seen = true }, c.screens), c.painted) << c.told;
        EXPECT_FALSE(looksPainted({ .frame = c.rect, .seen = false }, c.screens)) << c.told;
    }
}

} // namespace
