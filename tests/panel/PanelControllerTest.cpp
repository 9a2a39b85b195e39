// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelController.h"

#include "support/FakePopovers.h"
#include "support/FakeScreens.h"
#include "support/FakeSurfaceHosts.h"
#include "support/FakeWorkspace.h"
#include "support/StateBench.h"

#include <algorithm>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using platform::Rect;
using platform::Seconds;

/// A panel with nothing in it. `calls` has the popover's and the content's steps in one order.
struct PanelBench : StateBench, PanelContent {
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

    FakePopovers popovers;
    FakeScreens screens = [] {
        FakeScreens one;
        one.screens = { { "Main", { 0, 0, 1440, 900 }, { 0, 0, 1440, 875 } } };
        one.mouse = { 700, 400 };
        return one;
    }();
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
    for (const char* text :
        { "esc", "esc-field", "cmd-w", "x", "bar-or-hotkey", "route-hide", "route-toggle" }) {
        PanelBench bench;
        bench.panel.close(text);
        EXPECT_EQ(bench.reason(), "none") << "it is closed";
        bench.panel.show();
        bench.panel.close(text);
        EXPECT_EQ(bench.reason(), text);
        bench.defaults.remove(PanelController::lastCloseKey);
        bench.panel.close(text);
        EXPECT_EQ(bench.reason(), "none") << "one opening gives one line";
    }
    using enum ZOLSurface::CloseReason;
    const std::pair<const char*, ZOLSurface::CloseReason> reasons[] { { "esc", escape },
        { "esc-field", escape }, { "cmd-w", commandW }, { "x", closeButton },
        { "bar-or-hotkey", menuBarItem }, { "outside-click", outsideClick }, { "route-hide", route },
        { "testbed-reshow", route } };
    for (const auto& [text, reason] : reasons)
        EXPECT_EQ(PanelController::closeReason(text), reason) << text;

    PanelBench bench;
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
    bench.panel.show();
    bench.steps();
    bench.panel.showTestbed();
    EXPECT_EQ(bench.steps().front(), "perform close") << "an ordinary opening ended the other place";
}

TEST(PanelController, ANewContentKeepsAnOpenPanelOpenWithTheKeyboard)
{
    PanelBench bench;
    bench.panel.rebuildContent();
    EXPECT_EQ(bench.steps(), Steps {}) << "nothing is built yet";
    bench.panel.show();
    bench.steps();
    bench.panel.rebuildContent();
    EXPECT_EQ(bench.steps(), (Steps { "build", "view", "render", "key", "keys" }));
    bench.panel.close("esc");
    bench.steps();
    bench.panel.rebuildContent();
    EXPECT_EQ(bench.steps(), (Steps { "build", "view", "render" }));
}

} // namespace
