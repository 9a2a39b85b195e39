// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLPinPolicy.h"
#include "design/ZOLSurface.h"
#include "design/ZOLThemePolicy.h"

#include "support/FakeSurfaceHosts.h"
#include "support/FakeUserDefaults.h"
#include "support/FakeWorkspace.h"

#include <optional>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using enum ZOLSurface::CloseReason;
using Calls = std::vector<std::string>;

struct Bench : FakeSurfaceHosts {
    explicit Bench(bool asWindow, bool pinned = false)
    {
        ZOLSurface::Host host = std::ref<platform::Popover>(*this);
        if (asWindow)
            host = std::ref<platform::Window>(*this);
        surface.emplace(host, pinned, *this, workspace);
        surface->setOnShow([this] { calls.emplace_back("shown"); });
        surface->setOnClose([this](auto reason) { calls.emplace_back(ZOLSurface::rawValue(reason)); });
    }
    void open(const Rect& rect = {}) { surface->show(rect, this, platform::Edge::bottom); }

    FakeWorkspace workspace;
    std::optional<ZOLSurface> surface;
};

TEST(ZOLSurface, ShowsAndClosesEachKindOfHostInItsOwnWayAndOnce)
{
    struct Case {
        bool window;
        bool reduceMotion;
        platform::Rect rect;
        Calls expected;
    };
    const Case cases[] { { false, false, {}, { "layout", "animates true", "show 0,0 24x22 at 1", "shown" } },
        { false, true, { 2, 3, 4, 5 }, { "layout", "animates false", "show 2,3 4x5 at 1", "shown" } },
        { true, false, {},
            { "layout", "display", "alpha 0", "frame 10,94 200x50", "front", "in 0.18 to 1, 10,100 200x50",
                "shown" } },
        { true, true, {}, { "layout", "display", "alpha 1", "front", "shown" } } };
    for (const Case& c : cases) {
        Bench bench(c.window);
        bench.workspace.setReduceMotion(c.reduceMotion);
        bench.surface->close(escape);
        bench.open(c.rect);
        bench.open(c.rect);
        EXPECT_EQ(bench.calls, c.expected);
        bench.calls.clear();
        bench.onClose = [&] { bench.surface->close(host); }; // hosts tell of each closing
        bench.surface->close(commandW);
        bench.surface->close(escape);
        EXPECT_EQ(bench.calls, Calls({ c.window ? "out" : "close", "command-w" }));
    }
    Calls reasons;
    for (const auto reason :
        { escape, commandW, closeButton, menuBarItem, hotkey, route, outsideClick, host })
        reasons.emplace_back(ZOLSurface::rawValue(reason));
    EXPECT_EQ(reasons,
        Calls({ "escape", "command-w", "close-button", "menu-bar-item", "hotkey", "route", "outside-click",
            "host" }));
    Bench bench(false);
    bench.surface->show({ 1, 1, 1, 1 }, nullptr, platform::Edge::top);
    EXPECT_FALSE(bench.surface->isShown()) << "nothing to hang from";
}

TEST(ZOLSurface, WatchesTheMouseOutsideExactlyWhileShownAndUnpinned)
{
    Bench bench(false, true);
    bench.open();
    for (const bool pinned : { true, false, false, true, false }) {
        bench.surface->setPinned(pinned);
        EXPECT_EQ(bench.monitors.count(), pinned ? 0 : 1);
    }
    bench.calls.clear();
    bench.monitors.tell();
    EXPECT_EQ(bench.calls, Calls({ "close", "outside-click" }));
    bench.surface->setPinned(false);
    EXPECT_EQ(bench.monitors.count(), 0) << "closed";
    bench.open();
    bench.surface->setOnClose([&](auto) { bench.surface.reset(); });
    bench.monitors.tell();
    EXPECT_EQ(bench.monitors.count(), 0) << "its callback may destroy it";
}

TEST(ZOLPinPolicy, AStoredPinCountsOnlyOnceTheOldOneWasTurnedOff)
{
    for (const bool migrated : { false, true })
        for (const std::optional<bool> stored : { std::optional<bool>(), { false }, { true } }) {
            const ZOLPinPolicy::PinResolution expected { migrated && stored == true, !migrated, !migrated };
            EXPECT_EQ(ZOLPinPolicy::resolve(stored, migrated), expected) << migrated << stored.has_value();
        }
}

TEST(ZOLThemePolicy, OnlyTheTwoStoredWordsNameAMode)
{
    using enum ZOLThemePolicy::Mode;
    const std::pair<std::optional<std::string_view>, ZOLThemePolicy::Mode> cases[] { { "dark", dark },
        { "light", light }, { "Dark", light }, { "black", light }, { " dark", light }, { "", light },
        { std::nullopt, light } };
    for (const auto& [raw, mode] : cases)
        EXPECT_EQ(ZOLThemePolicy::resolve(raw), mode) << raw.value_or("none");
    FakeUserDefaults defaults;
    EXPECT_EQ(ZOLThemePolicy::load(defaults, ZOLThemePolicy::key()), light);
    defaults.setText("dev.quent.ostrel.theme", ZOLThemePolicy::rawValue(dark));
    EXPECT_EQ(ZOLThemePolicy::load(defaults, ZOLThemePolicy::key()), dark);
    defaults.setBoolean("dev.quent.ostrel.theme", true);
    EXPECT_EQ(ZOLThemePolicy::load(defaults, ZOLThemePolicy::key()), light);
}

} // namespace
