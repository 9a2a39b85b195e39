// SPDX-License-Identifier: Apache-2.0
#include "panel/LiveValues.h"
#include "panel/GaugeRules.h"

#include "support/FakePanel.h"
#include "support/StateBench.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Written = std::map<std::string, std::string>;

/// Live views that keep the last that they were given.
struct LiveBench : StateBench, LiveViews {
    void setText(std::string_view key, std::string_view text) override { texts[std::string(key)] = text; }
    void updateGauge(
        std::string_view key, double pct, std::optional<double> from, std::string_view level) override
    {
        gauges[std::string(key)] = fmt::format("{} from {}: {}", pct, from.value_or(-1), level);
    }
    void applyGraph(std::string_view key, const std::vector<double>& values,
        const std::vector<std::int64_t>& minutes, std::optional<std::size_t> boundary) override
    {
        graphs[std::string(key)] = fmt::format(
            "{} at {}, live: {}", fmt::join(values, " "), fmt::join(minutes, " "), boundary.value_or(99));
    }

    /// A tick that reads these percentages, and its values written.
    void show(std::uint32_t cpu, std::uint64_t memory, std::uint64_t swap)
    {
        kernel.reading.physicalMemoryBytes = 100;
        kernel.reading.usedBytes = memory;
        kernel.reading.swapTotalBytes = 100 * mb;
        kernel.reading.swapUsedBytes = swap * mb;
        setCpu(cpu);
        tick.tickNative();
        live.refreshLiveValues();
    }

    FakePanel body;
    Written texts;
    Written gauges;
    Written graphs;
    OstrelHistory history;
    LiveValues live { { tick, snapshots, history, settings }, *this, body, [] { return " cpu 3% "; } };
};

TEST(LiveValues, EveryLabelHasItsTextOnceThereIsAReading)
{
    LiveBench bench;
    bench.live.refreshLiveValues();
    EXPECT_TRUE(bench.texts.empty() && bench.gauges.empty() && bench.graphs.empty());
    bench.body.tab = OstrelMode::system;
    bench.kernel.reading = { .swapTotalBytes = 4096 * bench.mb,
        .swapUsedBytes = 1536 * bench.mb,
        .physicalMemoryBytes = 15872 * bench.mb,
        .usedBytes = 11776 * bench.mb,
        .freeBytes = 214 * bench.mb };
    bench.tick.tickNative();
    bench.setCpu(17);
    bench.tick.tickNative();
    bench.live.refreshLiveValues();
    Written expected { { "cpu", "17%" }, { "mem", "11.5 GB" }, { "mem-sub", "74% of 16 GB" },
        { "swap", "1.5 gb" }, { "swap-sub", "38% allocated · retained" }, { "free", "214 mb free" },
        { "bar-preview", "cpu 3%" } };
    EXPECT_EQ(bench.texts, expected) << "without a snapshot there is no age";
    bench.fetch(R"({"ram":{},"swap":{}})");
    bench.time.jump(platform::Seconds(12));
    bench.live.refreshLiveValues();
    expected.emplace("snapshot-age", "collector snapshot · 12s ago");
    EXPECT_EQ(bench.texts, expected);
}

TEST(LiveValues, GaugesAreJudgedAtTheirOwnEdges)
{
    using Case = std::tuple<std::uint32_t, std::uint64_t, std::uint64_t, const char*>;
    LiveBench bench;
    bench.tick.tickNative();
    for (const auto& [cpu, memory, swap, level] :
        { Case { 0, 0, 0, "normal" }, Case { 59, 69, 44, "normal" }, Case { 60, 70, 45, "warn" },
            Case { 84, 84, 69, "warn" }, Case { 85, 85, 70, "crit" }, Case { 100, 100, 100, "crit" } }) {
        bench.show(cpu, memory, swap);
        for (const auto& [key, gauge] : bench.gauges)
            EXPECT_TRUE(gauge.ends_with(level)) << key << " " << gauge;
    }
}

TEST(LiveValues, AGaugeMovesFromWhereItStoodEvenThoughNoBodyShowedIt)
{
    LiveBench bench;
    bench.tick.tickNative();
    bench.show(10, 20, 30);
    EXPECT_EQ(bench.gauges.at("cpu"), "10 from -1: normal");
    bench.body.tab = OstrelMode::settings;
    bench.show(40, 50, 60);
    bench.show(70, 80, 20);
    EXPECT_EQ(bench.gauges,
        (Written { { "cpu", "70 from 40: warn" }, { "memory", "80 from 50: warn" },
            { "swap", "20 from 60: normal" } }));
}

TEST(LiveValues, GraphsAreDrawnOnTheDashboardOnly)
{
    LiveBench bench;
    constexpr std::int64_t first = 28'000'000;
    bench.history.points = { { first, 1, 90, 0, 0 }, { first + 81, 10, 20, 0, 0 },
        { first + 199, 30, 40, 0, 0 }, { first + 200, 50, 60, 0, 0 } };
    bench.history.restored = 3;
    bench.body.tab = OstrelMode::system;
    bench.tick.tickNative();
    bench.live.refreshLiveValues();
    EXPECT_TRUE(bench.graphs.empty());
    bench.body.tab = OstrelMode::overview;
    bench.live.refreshLiveValues();
    const std::string when = " at 28000081 28000199 28000200, live: 2";
    EXPECT_EQ(bench.graphs, (Written { { "cpu", "10 30 50" + when }, { "swap", "20 40 60" + when } }));
    for (const char* key : { "history-caption-cpu", "history-caption-swap" })
        EXPECT_EQ(bench.texts.at(key), "120 min shown · 2 restored + 1 this run · 4 min kept of 1440") << key;
}

TEST(GaugeRules, ItStartsAndEndsSlowly)
{
    for (const auto& [t, eased] :
        { std::pair { 0.0, 0.0 }, { 0.25, 0.0625 }, { 0.5, 0.5 }, { 0.75, 0.9375 }, { 1.0, 1.0 } })
        EXPECT_DOUBLE_EQ(GaugeRules::easeInOut(t), eased) << t;
}

TEST(GaugeRules, ALevelIsMarkedOnlyWhereColourMustNotTellAlone)
{
    for (const auto& [level, wanted, mark] : { std::tuple { "crit", true, "▲ " }, { "warn", true, "△ " },
             { "normal", true, "" }, { "", true, "" }, { "crit", false, "" }, { "warn", false, "" } })
        EXPECT_EQ(GaugeRules::levelMark(level, wanted), mark) << level;
    EXPECT_EQ(GaugeRules::valueText("▲ ", 84.5), "▲ 85%");
    EXPECT_EQ(GaugeRules::valueText("", 84.49), "84%");
}

TEST(GaugeRules, APercentageBeyondTheRingIsShownAtTheLimit)
{
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (const auto& [pct, shown] : { std::pair { 140.0, 100.0 }, { -3.0, 0.0 }, { 41.5, 41.5 },
             { infinite, 100.0 }, { -infinite, 0.0 }, { std::nan(""), 0.0 } })
        EXPECT_EQ(GaugeRules::shown(pct), shown) << pct;
    for (const auto& [pct, sweep] :
        { std::pair { 0.1, 0.0 }, { 0.11, 0.396 }, { 25.0, 90.0 }, { 100.0, 360.0 } })
        EXPECT_NEAR(GaugeRules::sweep(pct), sweep, 1e-9) << pct;
}

TEST(GaugeMotion, ReachesItsValueInTwentySixPicturesAndNeverTurnsBack)
{
    GaugeMotion motion;
    motion.stand(80);
    ASSERT_TRUE(motion.setOut(20, true));
    EXPECT_EQ(motion.displayed(), 80) << "it sets out from where it is";
    double before = 80;
    int pictures = 1;
    for (; motion.step(); ++pictures) {
        EXPECT_LT(motion.displayed(), before);
        EXPECT_GT(motion.displayed(), 20);
        before = motion.displayed();
        if (pictures == 12) {
            EXPECT_NEAR(before, 80 - 60 * 4 * std::pow(12 / 25.2, 3), 1e-9);
        }
    }
    EXPECT_EQ(pictures, 26) << "0.42 s at sixty a second";
    EXPECT_EQ(motion.displayed(), 20);
    EXPECT_FALSE(motion.moving());
}

TEST(GaugeMotion, TooSmallAWayOrLessMovementIsNoWayAtAll)
{
    for (const auto& [to, moves, travels] : { std::tuple { 50.39, true, false }, { 50.41, true, true },
             { 49.61, true, false }, { 49.59, true, true }, { 90.0, false, false }, { 190.0, true, true } }) {
        GaugeMotion motion;
        motion.stand(50);
        EXPECT_EQ(motion.setOut(to, moves), travels) << to;
        EXPECT_EQ(motion.displayed(), travels ? 50 : to) << to;
        motion.arrive();
        EXPECT_EQ(motion.displayed(), std::min(to, 100.0));
    }
}

} // namespace
