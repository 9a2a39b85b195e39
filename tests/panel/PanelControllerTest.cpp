// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelController.h"
#include "panel/HelpText.h"
#include "panel/PanelKeys.h"
#include "panel/PanelScreen.h"

#include "support/FakePopovers.h"
#include "support/FakeScreens.h"
#include "support/FakeSurfaceHosts.h"
#include "support/FakeWorkspace.h"
#include "support/StateBench.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using platform::Point;
using platform::Rect;
using platform::Seconds;

/// A panel with nothing in it. `calls` has the popover's and the content's steps in one order.
struct PanelBench : StateBench, PanelContent {
    PanelBench()
    {
        screens.screens = { { "Main", { 0, 0, 1440, 900 }, { 0, 0, 1440, 875 } } };
        screens.mouse = { 700, 400 };
    }
    QWidget* makeContent() override
    {
        popovers.calls.emplace_back("build");
        return nullptr;
    }
    void renderBody() override { popovers.calls.emplace_back("render"); }
    void takeKeys() override { popovers.calls.emplace_back("keys"); }
    void showPinned(bool pinned) override { popovers.calls.emplace_back(pinned ? "pin" : "unpin"); }
    bool dismissHelpOverlay(bool animated) override
    {
        popovers.calls.emplace_back(animated ? "fade help" : "drop help");
        return false;
    }

    /// What happened since the last call.
    std::vector<std::string> steps() { return std::exchange(popovers.calls, {}); }
    /// The reason kept for the last close.
    [[nodiscard]] std::string reason()
    {
        const std::string text = defaults.text(PanelController::lastCloseKey).value_or("none");
        return text.substr(0, text.find(' '));
    }
    void later(double seconds) { time.advance(Seconds(seconds)); }
    /// Opens it, with its steps forgotten.
    void open()
    {
        panel.show();
        steps();
    }

    FakePopovers popovers;
    FakeScreens screens;
    FakeWorkspace workspace;
    FakeSurfaceHosts mouse;
    bool hasItem = true;
    std::optional<Rect> itemFrame = Rect { 1000, 875, 38, 25 };
    std::string placed;
    PanelController panel { *this, settings, { popovers, mouse, workspace, screens, defaults, time, time },
        { .hasBarItem = [this] { return hasItem; },
            .barItemFrame = [this] { return itemFrame; },
            .willShow = [this](bool opening) { popovers.calls.emplace_back(opening ? "opening" : "again"); },
            .placed = [this](std::string_view text) { placed = text; },
            .opened = [this] { popovers.calls.emplace_back("opened"); },
            .applyBarLength = [this] { popovers.calls.emplace_back("length"); },
            .closed = [this] { popovers.calls.emplace_back("closed"); } } };
};

using Steps = std::vector<std::string>;

TEST(PanelController, BuildsOnceDrawsBeforeItShowsAndTakesTheKeyboard)
{
    PanelBench bench;
    bench.hasItem = false;
    bench.panel.show();
    EXPECT_EQ(bench.steps(), Steps {}) << "there is nothing to hang from";
    bench.hasItem = true;
    bench.panel.show();
    EXPECT_EQ(bench.steps(),
        (Steps { "opening", "make", "build", "view", "transient true", "render", "show below", "key", "keys",
            "opened" }));
    bench.panel.show();
    EXPECT_EQ(bench.steps(), (Steps { "again", "render", "key", "keys", "opened" }))
        << "an open one comes forward";
    bench.later(0.3);
    EXPECT_EQ(bench.steps(), Steps {});
    bench.panel.close("esc");
    EXPECT_EQ(bench.steps(), (Steps { "perform close", "length", "closed", "drop help" }));
    bench.popovers.key = false;
    bench.panel.show();
    EXPECT_EQ(bench.steps(), (Steps { "opening", "render", "show below", "key", "keys", "opened" }));
    bench.later(0.3);
    EXPECT_EQ(bench.steps(), (Steps { "key", "keys" })) << "the window manager passed it over";
    bench.panel.show();
    bench.panel.close("esc");
    bench.steps();
    bench.later(0.3);
    EXPECT_EQ(bench.steps(), Steps {}) << "a closed panel asks for nothing";
}

TEST(PanelController, HangsFromTheItemOnThePointersDisplayAndElseFromTheCorner)
{
    PanelBench bench;
    const Rect corner { 1035, 873, 2, 2 };
    const auto opensAt = [&](const Rect& anchor, const char* text) {
        bench.placed.clear();
        bench.panel.show();
        EXPECT_EQ(bench.popovers.anchor, anchor) << text;
        EXPECT_EQ(bench.placed, text);
        bench.panel.close("esc");
    };
    opensAt(*bench.itemFrame, "Main · bar item");
    bench.settings.barDisplayMode = BarDisplayMode::hidden;
    opensAt(corner, "Main · bar item");
    bench.settings.barDisplayMode = BarDisplayMode::mark;
    bench.itemFrame.reset();
    opensAt(corner, "Main · corner");
    bench.itemFrame = Rect { 2000, 875, 38, 25 };
    opensAt(corner, "Main · corner");
    bench.screens.screens.clear();
    opensAt({ 1035, 898, 2, 2 }, "no screen");
}

TEST(PanelController, EveryCloseLeavesItsReasonOnce)
{
    PanelBench bench;
    bench.panel.close("esc");
    EXPECT_EQ(bench.reason(), "none") << "it is closed";
    bench.panel.show();
    bench.panel.close("route-toggle");
    EXPECT_EQ(bench.reason(), "route-toggle");
    bench.defaults.remove(PanelController::lastCloseKey);
    bench.panel.close("esc");
    EXPECT_EQ(bench.reason(), "none") << "one opening gives one line";
    using enum ZOLSurface::CloseReason;
    const std::pair<const char*, ZOLSurface::CloseReason> reasons[] { { "esc", escape },
        { "esc-field", escape }, { "cmd-w", commandW }, { "x", closeButton },
        { "bar-or-hotkey", menuBarItem }, { "outside-click", outsideClick }, { "route-hide", route },
        { "testbed-reshow", route } };
    for (const auto& [text, reason] : reasons)
        EXPECT_EQ(PanelController::closeReason(text), reason) << text;

    bench.panel.show();
    bench.mouse.monitors.tell();
    EXPECT_EQ(bench.reason(), "outside-click");
    bench.panel.show();
    bench.popovers.closeByItself();
    EXPECT_EQ(bench.reason(), "system-transient");
    EXPECT_EQ(bench.panel.lastClose(), bench.time.now());
    EXPECT_EQ(bench.defaults.text("ostrel.lastClose")->size(),
        std::string("system-transient 2026-11-17T19:40:07Z").size());
    bench.panel.show();
    bench.panel.toggle();
    EXPECT_EQ(bench.reason(), "bar-or-hotkey");
    bench.panel.toggle();
    EXPECT_TRUE(bench.panel.shown());
}

TEST(PanelController, APinnedPanelHearsNoClickOutsideAndThePinTakesEffectAtOnce)
{
    PanelBench bench;
    bench.panel.setPinned(true);
    EXPECT_EQ(bench.defaults.boolean(Settings::pinKey), true);
    bench.panel.show();
    EXPECT_EQ(bench.mouse.monitors.count(), 0);
    bench.steps();
    bench.panel.setPinned(false);
    EXPECT_EQ(bench.steps(), (Steps { "transient true", "unpin" }));
    EXPECT_EQ(bench.mouse.monitors.count(), 1);
    bench.panel.setPinned(true);
    EXPECT_EQ(bench.mouse.monitors.count(), 0);
    bench.panel.close("x");
    bench.panel.setPinned(false);
    EXPECT_EQ(bench.mouse.monitors.count(), 0) << "a closed panel watches nothing";
}

TEST(PanelController, WhatIsLeftOfACloseLetsALaterOpeningAlone)
{
    PanelBench bench;
    bench.panel.show();
    bench.popovers.stuck = true;
    bench.panel.close("esc");
    EXPECT_EQ(bench.steps().back(), "perform close");
    bench.later(0.34);
    EXPECT_TRUE(bench.panel.shown());
    bench.later(0.02);
    EXPECT_FALSE(bench.panel.shown());
    EXPECT_EQ(bench.reason(), "esc");

    bench.popovers.stuck = false;
    bench.panel.show();
    bench.panel.close("esc");
    bench.panel.show();
    bench.later(1);
    EXPECT_TRUE(bench.panel.shown());
}

TEST(PanelController, TheTestbedIsAnotherPlaceReachedThroughACloseAndAPause)
{
    PanelBench bench;
    const Rect low { 1035, 22, 2, 2 };
    bench.panel.showTestbed();
    EXPECT_EQ(bench.popovers.anchor, low);
    EXPECT_EQ(bench.placed, "") << "nothing is said of displays";
    EXPECT_EQ(std::ranges::count(bench.steps(), "show above"), 1);
    bench.panel.showTestbed();
    EXPECT_EQ(bench.steps(), Steps {}) << "it is there already";
    bench.panel.close("x");
    bench.panel.show();
    EXPECT_EQ(bench.popovers.anchor, *bench.itemFrame);
    bench.panel.showTestbed();
    EXPECT_FALSE(bench.panel.shown());
    EXPECT_EQ(bench.reason(), "testbed-reshow");
    bench.later(0.39);
    EXPECT_FALSE(bench.panel.shown());
    bench.later(0.02);
    EXPECT_TRUE(bench.panel.shown());
    EXPECT_EQ(bench.popovers.anchor, low);
    bench.open();
    bench.panel.showTestbed();
    EXPECT_EQ(bench.steps().front(), "perform close") << "an ordinary opening ended the other place";
}

TEST(PanelController, ANewContentKeepsAnOpenPanelOpenWithTheKeyboard)
{
    PanelBench bench;
    bench.panel.rebuildContent();
    EXPECT_EQ(bench.steps(), Steps {}) << "nothing is built yet";
    bench.open();
    bench.panel.rebuildContent();
    EXPECT_EQ(bench.steps(), (Steps { "build", "view", "render", "key", "keys" }));
    bench.panel.close("esc");
    bench.steps();
    bench.panel.rebuildContent();
    EXPECT_EQ(bench.steps(), (Steps { "build", "view", "render" }));
}

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
        const PanelScreen::Anchor corner = PanelScreen::Corner { displays[*one.index].visible };
        EXPECT_EQ(choice->anchor, one.fromItem ? PanelScreen::BarItem {} : corner) << one.what;
    }
}

TEST(PanelScreen, AnAnchorLetsThePanelEndTwentyFourPointsFromTheFreeAreasEdges)
{
    FakeScreens screens;
    screens.screens = { { "A", { 0, 0, 1000, 800 }, { 0, 0, 1000, 800 } },
        { "B", { 1000, 0, 2000, 1000 }, { 1000, 50, 1960, 900 } } };
    screens.main = 1;
    EXPECT_EQ(PanelScreen::hiddenModeAnchor(screens, Rect { 10, 20, 990, 700 }), (Rect { 595, 718, 2, 2 }));
    EXPECT_EQ(PanelScreen::hiddenModeAnchor(screens, {}), (Rect { 2555, 948, 2, 2 }));
    EXPECT_EQ(PanelScreen::testbedAnchor(screens), (Rect { 2555, 72, 2, 2 }));
    screens.main.reset();
    EXPECT_EQ(PanelScreen::hiddenModeAnchor(screens, {}), (Rect { 595, 798, 2, 2 }));
    screens.screens.clear();
    EXPECT_EQ(PanelScreen::testbedAnchor(screens), (Rect { 1035, 22, 2, 2 })) << "a usual display's";
}

TEST(PanelKeys, AKeyDoesOneThingAndAFieldKeepsWhatIsTypedIntoIt)
{
    using Kind = PanelKeyAction::Kind;
    const std::pair<PanelKey, PanelKeyAction> cases[] {
        { { .characters = "1" }, { Kind::tab, {}, OstrelMode::overview } },
        { { .characters = "9" }, { Kind::tab, {}, OstrelMode::settings } },
        { { .characters = "0" }, {} },
        { { .characters = "12" }, {} },
        { { .characters = "" }, {} },
        { { .characters = "3", .control = true }, {} },
        { { .characters = "3", .option = true }, {} },
        { { .characters = "3", .command = true }, {} },
        { { .characters = "3", .inTextField = true }, {} },
        { { .characters = "w", .command = true }, { Kind::close, "cmd-w" } },
        { { .characters = "w", .control = true }, { Kind::close, "cmd-w" } },
        { { .characters = "w" }, {} },
        { { .characters = "w", .control = true, .inTextField = true }, {} },
        { { .characters = "/" }, { Kind::help, {} } },
        { { .characters = "?", .control = true }, { Kind::help, {} } },
        { { .characters = "/", .inTextField = true }, {} },
        { { .characters = "\x1b", .escape = true }, { Kind::escape, "esc" } },
        { { .characters = "\x1b", .escape = true, .inTextField = true }, { Kind::escape, "esc-field" } },
    };
    for (const auto& [key, action] : cases)
        EXPECT_EQ(panelKeyAction(key), action) << key.characters << " " << key.inTextField;
}

TEST(PanelKeys, TheHelpNamesEveryTabByItsKey)
{
    const auto rows = helpRows();
    ASSERT_EQ(rows.size(), 18U);
    EXPECT_EQ(rows[2] + "|" + rows[10], "1    dashboard|9    settings");
}

} // namespace
