// SPDX-License-Identifier: Apache-2.0
#include "bar/BarItem.h"

#include "support/FakeStatusBar.h"
#include "support/StateBench.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

struct BarBench : StateBench, PanelDoor {
    void show() override { calls.push_back("show"); }
    void close(std::string_view) override { calls.push_back("close"); }
    void toggle() override { calls.push_back("toggle"); }

    std::vector<std::string> calls;
    FakeStatusBar bar;
    BarItem item { { bar, settings, tick, snapshots, *this, [this] { calls.push_back("quit"); } } };
};

TEST(BarItem, ShowsTheModeTheReadingAndTheSnapshotsCount)
{
    BarBench bench;
    bench.item.updateStatusButton();
    EXPECT_TRUE(bench.bar.faces.empty()) << "there is no item yet";
    bench.kernel.reading.pressureLevel = 1;
    bench.item.setupStatusItem({ { .width = 1, .height = 1, .pixels = { 7 } } });
    EXPECT_EQ(bench.bar.ids, (std::vector<std::string> { "dev.quent.ostrel ostrel" }));
    ASSERT_EQ(bench.bar.faces.size(), 1U) << "the item has its face before the first tick";
    EXPECT_EQ(bench.bar.faces.back().images.size(), 1U);
    EXPECT_EQ(
        bench.bar.faces.back().toolTip, "ostrel · cpu 0% · mem 0% · swap 0% · free 0 mb · normal · native");

    bench.settings.barDisplayMode = BarDisplayMode::markValue;
    bench.settings.barParts = { "mcp" };
    bench.fetch(R"({"ram":{},"swap":{},"fan":{"node":9}})");
    EXPECT_EQ(bench.item.title(), " mcp …") << "the snapshot has no such entry";
    bench.fetch(R"({"ram":{},"swap":{},"fan":{"mcp":0}})");
    bench.item.updateStatusButton();
    EXPECT_EQ(bench.bar.faces.back().label, " mcp 0");
    EXPECT_TRUE(bench.bar.faces.back().toolTip.ends_with(" · local CLI"));
    EXPECT_TRUE(bench.bar.faces.back().visible);

    bench.settings.barDisplayMode = BarDisplayMode::hidden;
    bench.item.updateStatusButton();
    EXPECT_FALSE(bench.bar.faces.back().visible);
    bench.item.removeStatusItem();
    EXPECT_EQ(bench.bar.items, 0);
}

TEST(BarItem, APressTogglesThePanelAndTheMenuShowsOrQuits)
{
    BarBench bench;
    bench.item.setupStatusItem({});
    bench.bar.activate(platform::Point { 3, 4 });
    const platform::Menu menu = bench.bar.menu();
    ASSERT_FALSE(menu.empty());
    EXPECT_EQ(menu.front().title, "ostrel · cpu 0% · mem 0% · swap 0% · ?");
    for (const char* title : { "show panel", "quit" })
        for (const platform::MenuItem& row : menu)
            if (row.title == title)
                row.action();
    EXPECT_EQ(bench.calls, (std::vector<std::string> { "toggle", "show", "quit" }));
}

} // namespace
