// SPDX-License-Identifier: Apache-2.0
#include "BarBench.h"

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
    struct Case {
        platform::StatusItemPress press;
        bool open;
        std::optional<platform::Instant::duration> sinceClose;
        Calls calls;
        int menus;
    };
    const Case cases[] {
        { {}, false, {}, { "toggle" }, 0 },
        { {}, false, 499ms, {}, 0 },
        { {}, false, 500ms, { "toggle" }, 0 },
        { {}, false, -1h, { "toggle" }, 0 },
        { {}, true, 0s, { "toggle" }, 0 },
        { { .place = {}, .secondary = true }, false, 0s, {}, 1 },
        { { .place = {}, .control = true }, true, 9s, {}, 1 },
    };
    for (const Case& c : cases) {
        BarBench bench;
        bench.setUp();
        bench.door.open = c.open;
        if (c.sinceClose)
            bench.door.closed = bench.time.now() - *c.sinceClose;
        bench.bar.press(c.press);
        EXPECT_EQ(bench.door.calls, c.calls) << &c - cases;
        EXPECT_EQ(bench.bar.menusOpened, c.menus);
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

} // namespace
