// SPDX-License-Identifier: Apache-2.0
#include "panel/LiveValues.h"

#include "support/StateBench.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

/// Live views that keep what they were given, and a body in a mode of the test's choosing.
struct LiveBench : StateBench, LiveViews, PanelBody {
    struct Gauge {
        double pct;
        std::optional<double> from;
        std::string level;
        bool operator==(const Gauge&) const = default;
    };
    struct Graph {
        std::vector<double> values;
        std::optional<std::size_t> boundary;
        bool operator==(const Graph&) const = default;
    };

    void setText(std::string_view key, std::string_view text) override
    {
        texts.insert_or_assign(std::string(key), std::string(text));
    }
    void updateGauge(
        std::string_view key, double pct, std::optional<double> from, std::string_view level) override
    {
        gauges.insert_or_assign(std::string(key), Gauge { pct, from, std::string(level) });
    }
    void applyGraph(
        std::string_view key, const std::vector<double>& values, std::optional<std::size_t> boundary) override
    {
        graphs.insert_or_assign(std::string(key), Graph { values, boundary });
    }
    [[nodiscard]] OstrelMode mode() const override { return present; }
    [[nodiscard]] bool shown() const override { return true; }
    void renderBody() override { }
    void renderBodyThrottled(bool) override { }
    void switchMode(OstrelMode) override { }

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

    OstrelMode present = OstrelMode::system;
    std::string title = " cpu 3% ";
    std::map<std::string, std::string> texts;
    std::map<std::string, Gauge> gauges;
    std::map<std::string, Graph> graphs;
    OstrelHistory history;
    LiveValues live { { tick, snapshots, history, settings }, *this, *this, [this] { return title; } };
};

TEST(LiveValues, WriteNothingBeforeTheFirstReading)
{
    LiveBench bench;
    bench.present = OstrelMode::overview;
    bench.live.refreshLiveValues();
    EXPECT_TRUE(bench.texts.empty());
    EXPECT_TRUE(bench.gauges.empty());
    EXPECT_TRUE(bench.graphs.empty());
    EXPECT_TRUE(bench.live.gaugeLast().empty());
}

TEST(LiveValues, EveryLabelHasItsText)
{
    LiveBench bench;
    bench.kernel.reading = { .swapTotalBytes = 4096 * bench.mb,
        .swapUsedBytes = 1536 * bench.mb,
        .load1 = 0,
        .activeProcessorCount = 1,
        .pressureLevel = 1,
        .physicalMemoryBytes = 15872 * bench.mb,
        .usedBytes = 11776 * bench.mb,
        .freeBytes = 214 * bench.mb };
    bench.tick.tickNative();
    bench.setCpu(17);
    bench.tick.tickNative();
    bench.live.refreshLiveValues();
    using Texts = std::map<std::string, std::string>;
    Texts expected { { "cpu", "17%" }, { "mem", "11.5 GB" }, { "mem-sub", "74% of 16 GB" },
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
        EXPECT_EQ(bench.gauges.at("cpu").level, level) << cpu;
        EXPECT_EQ(bench.gauges.at("memory").level, level) << memory;
        EXPECT_EQ(bench.gauges.at("swap").level, level) << swap;
    }
}

TEST(LiveValues, AGaugeMovesFromWhereItStoodEvenThoughNoBodyShowedIt)
{
    using Gauges = std::map<std::string, LiveBench::Gauge>;
    LiveBench bench;
    bench.tick.tickNative();
    bench.show(10, 20, 30);
    EXPECT_EQ(bench.gauges,
        (Gauges { { "cpu", { 10, {}, "normal" } }, { "memory", { 20, {}, "normal" } },
            { "swap", { 30, {}, "normal" } } }));
    bench.present = OstrelMode::settings;
    bench.show(40, 50, 60);
    EXPECT_EQ(bench.live.gaugeLast(),
        (std::map<std::string, double, std::less<>> { { "cpu", 40 }, { "memory", 50 }, { "swap", 60 } }));
    bench.show(70, 80, 20);
    EXPECT_EQ(bench.gauges,
        (Gauges { { "cpu", { 70, 40, "warn" } }, { "memory", { 80, 50, "warn" } },
            { "swap", { 20, 60, "normal" } } }));
}

TEST(LiveValues, GraphsAreDrawnOnTheDashboardOnly)
{
    LiveBench bench;
    constexpr std::int64_t first = 28'000'000;
    bench.history.points = { { first, 1, 90, 0, 0 }, { first + 81, 10, 20, 0, 0 },
        { first + 199, 30, 40, 0, 0 }, { first + 200, 50, 60, 0, 0 } };
    bench.history.restored = 3;
    bench.tick.tickNative();
    bench.live.refreshLiveValues();
    EXPECT_TRUE(bench.graphs.empty());
    EXPECT_FALSE(bench.texts.contains("history-caption-cpu"));
    bench.present = OstrelMode::overview;
    bench.live.refreshLiveValues();
    EXPECT_EQ(bench.graphs,
        (std::map<std::string, LiveBench::Graph> {
            { "cpu", { { 10, 30, 50 }, 2 } }, { "swap", { { 20, 40, 60 }, 2 } } }));
    for (const char* key : { "history-caption-cpu", "history-caption-swap" })
        EXPECT_EQ(bench.texts.at(key), "120 min shown · 2 restored + 1 this run · 4 min kept of 1440") << key;
}

} // namespace
