// SPDX-License-Identifier: Apache-2.0
#include "bar/Settings.h"

#include "support/FakeKernel.h"
#include "support/FakeUserDefaults.h"
#include "support/VirtualTime.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Words = std::vector<std::string>;

constexpr const char* pin = "dev.quent.ostrel.pinned";
constexpr const char* pinFlag = "zol.shell.pin-migrated";
constexpr const char* refresh = "dev.quent.ostrel.refresh";
constexpr const char* mode = "dev.quent.ostrel.barmode";
constexpr const char* modeFlag = "ostrel.v072.bar-mode-migrated";
constexpr const char* parts = "dev.quent.ostrel.barparts";
constexpr const char* partsFlag = "ostrel.v072.bar-parts-migrated";
constexpr const char* hotkey = "dev.quent.ostrel.hotkey";
constexpr const char* hotkeyCleared = "dev.quent.ostrel.hotkey-cleared";

/// Settings over a store that the test fills before it loads.
struct SettingsBench {
    void load() { settings.loadSettings(tick); }
    /// As in a store that no earlier version has to be migrated from.
    void setMigrated()
    {
        for (const char* flag : { pinFlag, modeFlag, partsFlag })
            stored.setBoolean(flag, true);
    }

    FakeKernel kernel;
    CPUSampler sampler { kernel };
    VirtualTime time;
    FakeUserDefaults stored;
    NativeTick tick { kernel, sampler, time, time, stored };
    Settings settings { stored };
};

void expectDefaults(const SettingsBench& bench, const char* when)
{
    SCOPED_TRACE(when);
    const Settings& settings = bench.settings;
    EXPECT_FALSE(settings.pinned);
    EXPECT_EQ(bench.tick.nativeInterval().count(), 5);
    EXPECT_EQ(settings.barDisplayMode, BarDisplayMode::mark);
    EXPECT_EQ(settings.barParts, (BarParts { "cpu", "swap" }));
    EXPECT_EQ(settings.hotkey, OstrelHotkey::fallback());
    EXPECT_FALSE(settings.hotkeyCleared);
    EXPECT_TRUE(settings.motionEnabled);
    EXPECT_TRUE(settings.dashboardDogEnabled);
    EXPECT_TRUE(settings.hintsEnabled);
    EXPECT_EQ(settings.serverAlias, "");
    EXPECT_EQ(settings.serverRepo, "");
}

TEST(Settings, AFirstLaunchTakesTheDefaultsAndStoresWhatItMigrates)
{
    SettingsBench bench;
    expectDefaults(bench, "before loading");
    bench.load();
    expectDefaults(bench, "after loading");
    EXPECT_EQ(bench.stored.boolean(pin), false);
    EXPECT_EQ(bench.stored.text(mode), "mark");
    EXPECT_EQ(bench.stored.textArray(parts), (Words { "cpu", "swap" }));
    for (const char* flag : { pinFlag, modeFlag, partsFlag })
        EXPECT_EQ(bench.stored.boolean(flag), true) << flag;
    EXPECT_EQ(bench.stored.values.size(), 6U) << "nothing else is written";
}

TEST(Settings, EveryStoredChoiceIsTaken)
{
    SettingsBench bench;
    bench.setMigrated();
    bench.stored.setBoolean(pin, true);
    bench.stored.setText(refresh, "calm");
    bench.stored.setText(mode, "hidden");
    bench.stored.setTextArray(parts, { "mcp", "load" });
    bench.stored.setText(hotkey, "35:786432::");
    for (const char* key : { "ostrel.motion", "ostrel.dashboardDog", "ostrel.hints" })
        bench.stored.setBoolean(key, false);
    bench.stored.setBoolean(hotkeyCleared, true);
    bench.stored.setText("ostrel.server.alias", "box");
    bench.stored.setText("ostrel.server.repo", "~/src");
    const auto before = bench.stored.values.size();
    bench.load();
    const Settings& settings = bench.settings;
    EXPECT_TRUE(settings.pinned);
    EXPECT_EQ(bench.tick.nativeInterval().count(), 10);
    EXPECT_EQ(settings.barDisplayMode, BarDisplayMode::hidden);
    EXPECT_EQ(settings.barParts, (BarParts { "load", "mcp" }));
    EXPECT_EQ(settings.hotkey, (OstrelHotkey { 35, 786432, ":" }));
    EXPECT_TRUE(settings.hotkeyCleared);
    EXPECT_FALSE(settings.motionEnabled);
    EXPECT_FALSE(settings.dashboardDogEnabled);
    EXPECT_FALSE(settings.hintsEnabled);
    EXPECT_EQ(settings.serverAlias, "box");
    EXPECT_EQ(settings.serverRepo, "~/src");
    EXPECT_EQ(bench.stored.values.size(), before) << "loading writes nothing";
}

TEST(Settings, AValueOfTheWrongTypeReadsAsAbsent)
{
    SettingsBench bench;
    bench.setMigrated();
    for (const char* key : { pin, hotkeyCleared, "ostrel.motion", "ostrel.dashboardDog", "ostrel.hints" })
        bench.stored.setText(key, "false");
    for (const char* key : { refresh, mode, hotkey, "ostrel.server.alias", "ostrel.server.repo" })
        bench.stored.setNumber(key, 1);
    bench.stored.setText(parts, "mem");
    bench.load();
    expectDefaults(bench, "after loading");
}

TEST(Settings, AnOldPinIsTurnedOffOnceAndThenTheChoiceStands)
{
    SettingsBench bench;
    bench.stored.setBoolean(pin, true);
    bench.load();
    EXPECT_FALSE(bench.settings.pinned);
    EXPECT_EQ(bench.stored.boolean(pin), false);
    EXPECT_EQ(bench.stored.boolean(pinFlag), true);
    bench.settings.storePinned(true);
    bench.load();
    EXPECT_TRUE(bench.settings.pinned);
    EXPECT_EQ(bench.stored.boolean(pin), true);
}

TEST(Settings, TheBarsModeIsMigratedOnce)
{
    struct Case {
        const char* what;
        std::optional<std::string> before;
        bool migrated;
        BarDisplayMode loaded;
        std::optional<std::string> after;
    };
    const Case cases[] {
        { "a known word", "value", false, BarDisplayMode::value, "value" },
        { "a word of old", "compact", false, BarDisplayMode::markValue, "mark + value" },
        { "an empty word", "", false, BarDisplayMode::markValue, "mark + value" },
        { "none", std::nullopt, false, BarDisplayMode::mark, "mark" },
        { "a word of old, migrated", "compact", true, BarDisplayMode::mark, "compact" },
        { "none, migrated", std::nullopt, true, BarDisplayMode::mark, std::nullopt },
    };
    for (const Case& c : cases) {
        SettingsBench bench;
        bench.stored.setBoolean(partsFlag, true);
        if (c.before)
            bench.stored.setText(mode, *c.before);
        if (c.migrated)
            bench.stored.setBoolean(modeFlag, true);
        bench.load();
        EXPECT_EQ(bench.settings.barDisplayMode, c.loaded) << c.what;
        EXPECT_EQ(bench.stored.text(mode), c.after) << c.what;
        EXPECT_EQ(bench.stored.boolean(modeFlag), true) << c.what;
    }
}

TEST(Settings, TheBarsPartsAreMigratedOnceWhateverWasStored)
{
    struct Case {
        const char* what;
        std::optional<Words> before;
        bool modeMigrated;
        bool partsMigrated;
        BarParts loaded;
        std::optional<Words> after;
    };
    const Words usual { "cpu", "swap" };
    const Case cases[] {
        { "both to do", Words { "cpu", "mem" }, false, false, { "cpu", "swap" }, usual },
        { "the parts to do", Words { "cpu", "mem" }, true, false, { "cpu", "swap" }, usual },
        { "the mode to do", Words { "mem", "x", "cpu", "mem" }, false, true, { "cpu", "mem" },
            Words { "cpu", "mem" } },
        { "nothing to do", Words { "mem", "x" }, true, true, { "mem" }, Words { "mem", "x" } },
        { "unknown names only", Words { "x", "Cpu" }, true, true, { "cpu", "swap" }, Words { "x", "Cpu" } },
        { "an empty list", Words {}, true, true, { "cpu", "swap" }, Words {} },
        { "none", std::nullopt, true, true, { "cpu", "swap" }, std::nullopt },
    };
    for (const Case& c : cases) {
        SettingsBench bench;
        if (c.before)
            bench.stored.setTextArray(parts, *c.before);
        bench.stored.setBoolean(modeFlag, c.modeMigrated);
        bench.stored.setBoolean(partsFlag, c.partsMigrated);
        bench.load();
        EXPECT_EQ(bench.settings.barParts, c.loaded) << c.what;
        EXPECT_EQ(bench.stored.textArray(parts), c.after) << c.what;
        EXPECT_EQ(bench.stored.boolean(partsFlag), true) << c.what;
    }
}

TEST(Settings, AMalformedHotkeyLeavesTheFallback)
{
    for (const char* text : { "", "46", "46:1572864", "46:1572864:", "a:1:m", "46:b:m", ":1:m", "46::m",
             "-1:1:m", "+46:1:m", " 46:1:m", "46 :1:m", "0x2e:1:m", "4294967296:1:m",
             "46:18446744073709551616:m", "46:1.0:m", "46:-1:m" }) {
        SettingsBench bench;
        bench.stored.setText(hotkey, text);
        bench.load();
        EXPECT_EQ(bench.settings.hotkey, OstrelHotkey::fallback()) << text;
        EXPECT_EQ(bench.stored.text(hotkey), text) << "it isn't rewritten";
    }
}

TEST(Settings, AChangeIsWrittenAtOnce)
{
    SettingsBench bench;
    bench.load();
    bench.settings.storeBarMode(BarDisplayMode::hidden);
    bench.settings.storeBarParts({ "load", "cpu" });
    bench.settings.flipMotion();
    bench.settings.flipHints();
    EXPECT_EQ(bench.stored.text(mode), "hidden");
    EXPECT_EQ(bench.stored.textArray(parts), (Words { "cpu", "load" }));
    EXPECT_EQ(bench.stored.boolean("ostrel.motion"), false);
    EXPECT_EQ(bench.stored.boolean("ostrel.hints"), false);
    SettingsBench next;
    next.stored.values = bench.stored.values;
    next.load();
    EXPECT_EQ(next.settings.barDisplayMode, BarDisplayMode::hidden);
    EXPECT_EQ(next.settings.barParts, (BarParts { "cpu", "load" }));
    EXPECT_FALSE(next.settings.motionEnabled);
    next.settings.flipMotion();
    EXPECT_EQ(next.stored.boolean("ostrel.motion"), true);
}

TEST(OstrelHotkey, WhatIsStoredReadsBack)
{
    const OstrelHotkey keys[] { OstrelHotkey::fallback(), { 49, OstrelHotkey::option, "space" },
        { 41, OstrelHotkey::control, ":" }, { 41, 0, "::" }, { 4294967295U, 18446744073709551615ULL, "é" } };
    for (const OstrelHotkey& key : keys)
        EXPECT_EQ(OstrelHotkey::fromStorage(key.storage()), key) << key.storage();
    EXPECT_EQ(OstrelHotkey::fallback().storage(), "46:1572864:m");
}

TEST(OstrelHotkey, TheLabelGivesTheModifiersInOneOrder)
{
    using K = OstrelHotkey;
    const std::pair<K, const char*> cases[] { { K::fallback(), "⌥⌘m" },
        { { 46, K::shift | K::control | K::command | K::option, "M" }, "⌃⌥⇧⌘m" },
        { { 46, K::control | K::option | 0x10000 | 0x800000, "m" }, "⌃⌥m" },
        { { 49, K::option | K::command, "space" }, "⌥⌘space" }, { { 123, K::shift, "←" }, "⇧←" },
        { { 0, 0, "É" }, "é" } };
    for (const auto& [key, label] : cases)
        EXPECT_EQ(key.display(), label);
}

} // namespace
