// SPDX-License-Identifier: Apache-2.0
#include "BarBench.h"

#include <tuple>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace std::chrono_literals;
using enum BarDisplayMode;
using Calls = std::vector<std::string>;

TEST(BarItem, ShowsInEachModeWhatThatModeHasRoomFor)
{
    const auto told = [](const platform::StatusItemFace& face) {
        const auto key = [](const auto& picture) { return picture ? picture->key() : "-"; };
        return fmt::format("{} {} [{}] [{}] '{}' {} / {}", face.visible, face.length, face.label,
            face.labelGuide, face.iconName, key(face.icon), key(face.picture));
    };
    BarBench bench;
    bench.item.updateStatusButton();
    EXPECT_TRUE(bench.bar.faces.empty()) << "there is no item yet";
    bench.artist.characterWidth = 1.04;
    bench.settings.barParts = { "mcp", "swap", "load" };
    bench.setUp();
    EXPECT_EQ(bench.bar.ids, Calls { "dev.quent.ostrel ostrel" });
    EXPECT_EQ(bench.bar.folder, "icons");
    EXPECT_EQ(bench.face().toolTip, "ostrel · cpu 0% · mem 0% · swap 0% · free 0 mb · ? · native");
    EXPECT_EQ(bench.face().accessibilityHelp,
        "click toggles the ostrel panel; right-click opens the service menu; " + bench.settings.hotkeyLabel()
            + " toggles from anywhere");
    const std::pair<BarDisplayMode, const char*> cases[] {
        { mark, "true 38 [] [] 'dev.quent.ostrel-symbolic' mark / mark" },
        { markValue,
            "true 71 [ swap 0% · load 0.0 · mcp …] [ swap 100% · load 99.9 · mcp 999] "
            "'dev.quent.ostrel-symbolic' mark / mark 0% 0.0" },
        { value, "true 48 [swap 0% · load 0.0 · mcp …] [swap 100% · load 99.9 · mcp 999] '' - /  0% 0.0" },
        { hidden, "false 16 [] [] '' - / -" },
    };
    for (const auto& [mode, face] : cases) {
        bench.settings.barDisplayMode = mode;
        bench.item.updateStatusButton();
        EXPECT_EQ(told(bench.face()), face);
    }
    bench.settings.barDisplayMode = value;
    bench.settings.barParts = { "mcp" };
    for (const auto& [fan, title] : { std::pair { "node", "mcp …" }, { "mcp", "mcp 0" } }) {
        bench.fetch(fmt::format(R"({{"ram":{{}},"swap":{{}},"fan":{{"{}":0}}}})", fan));
        bench.item.updateStatusButton();
        EXPECT_EQ(bench.face().label, title) << "a snapshot without the entry tells no number";
    }
    bench.item.removeStatusItem();
    EXPECT_EQ(bench.bar.items, 0);
}

TEST(BarItem, HoldsItsWidthWhileThePanelHangsFromIt)
{
    BarBench bench;
    bench.settings.barDisplayMode = value;
    bench.setUp();
    const double before = bench.face().length;
    bench.artist.characterWidth = 2;
    bench.door.open = true;
    bench.settings.barParts = { "cpu" };
    bench.item.updateStatusButton();
    EXPECT_EQ(bench.face().length, before);
    EXPECT_EQ(bench.face().label, "cpu 0%") << "the text goes on";
    bench.door.open = false;
    bench.item.applyPendingLength();
    EXPECT_EQ(bench.face().length, 16 + 12);
    const std::size_t faces = bench.bar.faces.size();
    bench.item.applyPendingLength();
    EXPECT_EQ(bench.bar.faces.size(), faces) << "nothing is held back any more";
}

TEST(BarItem, AsksBeforeItHides)
{
    BarBench bench;
    bench.setUp();
    const auto stored = [&] { return bench.defaults.text(Settings::barModeKey).value_or("-"); };
    bench.item.setBarMode(hidden);
    EXPECT_TRUE(bench.item.hiddenConfirmPending());
    EXPECT_EQ(stored(), "-");
    bench.item.cancelHiddenBar();
    EXPECT_FALSE(bench.item.hiddenConfirmPending());
    bench.item.setBarMode(hidden);
    bench.item.setBarMode(value);
    EXPECT_FALSE(bench.item.hiddenConfirmPending()) << "another mode drops the request";
    EXPECT_EQ(stored(), "value");
    bench.item.confirmHiddenBar();
    EXPECT_FALSE(bench.item.hiddenConfirmPending());
    EXPECT_EQ(stored(), "hidden");
    EXPECT_FALSE(bench.face().visible);
    EXPECT_EQ(bench.body.calls, (Calls { "render", "render" }));
}

TEST(BarItem, NeverLosesItsLastPart)
{
    BarBench bench;
    for (const auto& [part, parts] : { std::pair { BarPart::cpu, Calls { "swap" } },
             { BarPart::swap, { "swap" } }, { BarPart::mcp, { "mcp", "swap" } } }) {
        bench.item.toggleBarPart(part);
        EXPECT_EQ(bench.defaults.textArray(Settings::barPartsKey), parts);
    }
}

TEST(BarItem, APressTogglesUnlessItJustClosedThePanelAndOpensTheMenuAtAnyTime)
{
    using SinceClose = std::optional<platform::Instant::duration>;
    const std::tuple<platform::StatusItemPress, bool, SinceClose, Calls, int> cases[] {
        { {}, false, {}, { "toggle" }, 0 },
        { {}, false, 499ms, {}, 0 },
        { {}, false, 500ms, { "toggle" }, 0 },
        { {}, false, -1h, { "toggle" }, 0 },
        { {}, true, 0s, { "toggle" }, 0 },
        { { .place = {}, .secondary = true }, false, 0s, {}, 1 },
        { { .place = {}, .control = true }, true, 9s, {}, 1 },
    };
    for (const auto& [press, open, sinceClose, calls, menus] : cases) {
        BarBench bench;
        bench.setUp();
        bench.door.open = open;
        if (sinceClose)
            bench.door.closed = bench.time.now() - *sinceClose;
        bench.bar.press(press);
        EXPECT_EQ(bench.door.calls, calls) << open;
        EXPECT_EQ(bench.bar.menusOpened, menus);
    }
}

TEST(BarItem, LooksThreeTimesLaterWhereTheDesktopPutItButNotAfterItsEnd)
{
    BarBench bench;
    bench.setUp();
    bench.time.advance(1s);
    for (const auto& [wait, x] : { std::pair { 1s, 10 }, { 13s, 20 }, { 45s, 30 } }) {
        bench.bar.placement = { .frame = { double(x), 960, 38, 20 }, .seen = true };
        bench.time.advance(wait);
        EXPECT_NE(bench.state().find(fmt::format("[{}, 960, 38, 20]", x)), std::string::npos) << x;
    }
    BarBench ended;
    {
        BarItem item({ ended.bar, ended.time, ended.time, ended.settings, ended.tick, ended.snapshots,
            ended.door, ended.body, ended.artist, ended.stateFile, {} });
        item.setupStatusItem([] { return platform::Menu(); });
    }
    ended.files.contents.clear();
    ended.time.advance(60s);
    ended.bar.press({});
    EXPECT_EQ(ended.state() + fmt::format("{}", ended.door.calls.size()), "0");
}

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

BarReading reading(std::optional<std::int64_t> mcp = 0)
{
    return { .stats = { .swapUsedMB = 1,
                 .swapTotalMB = 8,
                 .load1 = 2.25,
                 .pressureLevel = 2,
                 .usedBytes = 425,
                 .totalBytes = 1000,
                 .freeMB = 1536 },
        .cpu = 16.5,
        .mcp = mcp,
        .source = "local CLI" };
}

TEST(BarTitle, ShowsTheChosenPartsInTheOrderOfTheBar)
{
    const BarParts all { "mcp", "load", "swap", "mem", "cpu" };
    const std::tuple<BarDisplayMode, BarParts, std::optional<std::int64_t>, const char*> cases[] {
        { mark, all, 0, "" },
        { hidden, all, 0, "" },
        { value, all, 0, "cpu 17% · mem 43% · swap 13% · load 2.2 · mcp 0" },
        { markValue, all, {}, " cpu 17% · mem 43% · swap 13% · load 2.2 · mcp …" },
        { value, {}, 0, "cpu 17% · swap 13%" },
        { markValue, { "gpu" }, 0, " swap 13%" },
        { value, { "gpu", "mcp" }, 12, "mcp 12" },
    };
    for (const auto& [mode, parts, mcp, title] : cases)
        EXPECT_EQ(barTitle(mode, parts, reading(mcp)), title) << rawValue(mode) << parts.size();
    EXPECT_EQ(
        barToolTip(reading()), "ostrel · cpu 17% · mem 43% · swap 13% · free 1.5 gb · warn · local CLI");
    EXPECT_EQ(barMenuHeadline(reading()), "ostrel · cpu 17% · mem 43% · swap 13% · warn");
}

TEST(BarStateFile, GivesTheFilesTextWithoutBlanksAtItsEnds)
{
    FakeFileManager files;
    const std::string path = "/home/someone/.config/zol-mini-apps/ostrel-bar-state.json";
    EXPECT_EQ(readBarState(files), std::nullopt);
    for (const auto& [text, state] :
        { std::pair { " \r\n\t{ }\n\n ", "{ }" }, { "\n", "" }, { "a\nb", "a\nb" } }) {
        files.contents[path] = text;
        EXPECT_EQ(readBarState(files), state);
    }
}

} // namespace
