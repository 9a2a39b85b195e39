// SPDX-License-Identifier: Apache-2.0
#include "bar/Settings.h"

#include "support/FakeKernel.h"
#include "support/FakeUserDefaults.h"
#include "support/VirtualTime.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Words = std::vector<std::string>;

constexpr const char* pin = "dev.quent.ostrel.pinned";
constexpr const char* pinFlag = "zol.shell.pin-migrated";
constexpr const char* mode = "dev.quent.ostrel.barmode";
constexpr const char* modeFlag = "ostrel.v072.bar-mode-migrated";
constexpr const char* parts = "dev.quent.ostrel.barparts";
constexpr const char* partsFlag = "ostrel.v072.bar-parts-migrated";
constexpr const char* hotkey = "dev.quent.ostrel.hotkey";

/// Settings over a store that the test fills before it loads.
struct SettingsBench {
    void load() { settings.loadSettings(tick); }
    [[nodiscard]] std::string bar() const
    {
        return fmt::format("{} {}", rawValue(settings.barDisplayMode), fmt::join(settings.barParts, "+"));
    }
    /// Every choice, in one line.
    [[nodiscard]] std::string told() const
    {
        const Settings& s = settings;
        return fmt::format("pinned {}, {} s, {}, {} cleared {}, motion {}, dog {}, hints {}", s.pinned,
            tick.nativeInterval().count(), bar(), s.hotkey.storage(), s.hotkeyCleared, s.motionEnabled,
            s.dashboardDogEnabled, s.hintsEnabled);
    }

    FakeKernel kernel;
    CPUSampler sampler { kernel };
    VirtualTime time;
    FakeUserDefaults stored;
    NativeTick tick { kernel, sampler, time, time, stored };
    Settings settings { stored };
};

TEST(Settings, AFirstLaunchTakesTheDefaultsAndStoresWhatItMigrates)
{
    SettingsBench bench;
    bench.load();
    EXPECT_EQ(bench.told(),
        "pinned false, 5 s, mark cpu+swap, 46:1572864:m cleared false, motion true, dog true, hints true");
    EXPECT_EQ(bench.stored.boolean(pin), false);
    EXPECT_EQ(bench.stored.values.size(), 6U) << "the pin, the bar's two choices, and a flag for each";
}

TEST(Settings, EveryStoredChoiceIsTaken)
{
    SettingsBench bench;
    for (const char* key : { pin, "dev.quent.ostrel.hotkey-cleared", pinFlag, modeFlag, partsFlag })
        bench.stored.setBoolean(key, true);
    for (const char* key : { "ostrel.motion", "ostrel.dashboardDog", "ostrel.hints" })
        bench.stored.setBoolean(key, false);
    for (const auto& [key, text] :
        { std::pair { "dev.quent.ostrel.refresh", "calm" }, { mode, "hidden" }, { hotkey, "35:786432::" } })
        bench.stored.setText(key, text);
    bench.stored.setTextArray(parts, { "mcp", "load" });
    bench.load();
    EXPECT_EQ(bench.told(),
        "pinned true, 10 s, hidden load+mcp, 35:786432:: cleared true, motion false, dog false, hints false");
    EXPECT_EQ(bench.stored.values.size(), 12U) << "loading writes nothing";
}

TEST(Settings, AnOldPinIsTurnedOffOnceAndThenTheChoiceStands)
{
    SettingsBench bench;
    bench.stored.setBoolean(pin, true);
    bench.load();
    EXPECT_FALSE(bench.settings.pinned);
    EXPECT_EQ(bench.stored.boolean(pin), false);
    bench.settings.storePinned(true);
    bench.load();
    EXPECT_TRUE(bench.settings.pinned);
}

TEST(Settings, TheBarsModeAndPartsAreMigratedOnceEach)
{
    struct Case {
        const char* mode; ///< stored before
        Words parts; ///< stored before
        bool modeMigrated, partsMigrated;
        const char *loaded, *after; ///< stored; "-" stands for a mode that isn't
    };
    const Case cases[] {
        { nullptr, { "cpu", "mem" }, false, false, "mark cpu+swap", "mark cpu+swap" },
        { "value", { "mem" }, false, true, "value mem", "value mem" },
        { "compact", { "mem" }, false, true, "mark + value mem", "mark + value mem" },
        { "", { "mem" }, false, true, "mark + value mem", "mark + value mem" },
        { nullptr, { "mem", "x", "cpu", "mem" }, false, true, "mark cpu+mem", "mark cpu+mem" },
        { nullptr, { "cpu", "mem" }, true, false, "mark cpu+swap", "- cpu+swap" },
        { "compact", { "mem", "x" }, true, true, "mark mem", "compact mem+x" },
        { "value", { "x", "Cpu" }, true, true, "value cpu+swap", "value x+Cpu" },
        { nullptr, {}, true, true, "mark cpu+swap", "- " },
    };
    for (const Case& c : cases) {
        SettingsBench bench;
        if (c.mode)
            bench.stored.setText(mode, c.mode);
        bench.stored.setTextArray(parts, c.parts);
        bench.stored.setBoolean(modeFlag, c.modeMigrated);
        bench.stored.setBoolean(partsFlag, c.partsMigrated);
        bench.load();
        const std::string after = fmt::format("{} {}", bench.stored.text(mode).value_or("-"),
            fmt::join(bench.stored.textArray(parts).value_or(Words()), "+"));
        EXPECT_EQ(bench.bar(), c.loaded) << c.after;
        EXPECT_EQ(after, c.after);
        for (const char* flag : { modeFlag, partsFlag })
            EXPECT_EQ(bench.stored.boolean(flag), true) << c.after;
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
    SettingsBench next;
    next.stored.values = bench.stored.values;
    next.load();
    EXPECT_EQ(next.told(),
        "pinned false, 5 s, hidden cpu+load, 46:1572864:m cleared false, motion false, dog true, hints "
        "false");
}

} // namespace
