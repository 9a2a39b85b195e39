// SPDX-License-Identifier: Apache-2.0
#include "panel/DashboardText.h"

#include <cstdint>
#include <limits>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

constexpr double gb = NativeStats::bytesPerGB;

TEST(DashboardText, OnlyWarningAndCriticalPressureAlarm)
{
    const std::string live = "Live macOS memory pressure. Retained swap alone does not indicate pressure.";
    const std::string none = "macOS pressure unavailable; refresh to retry";
    for (const auto& [level, word, alarming, toolTip] : { std::tuple { 1, "NORMAL", false, live },
             { 2, "WARNING", true, live }, { 4, "CRITICAL", true, live }, { 0, "UNKNOWN", false, none },
             { 3, "UNKNOWN", false, none }, { 5, "UNKNOWN", false, none }, { -1, "UNKNOWN", false, none } }) {
        const DashboardText text = dashboardText({ .native = { .pressureLevel = level } }, {});
        EXPECT_EQ(text.pressure, std::string("OS PRESSURE · ") + word);
        EXPECT_EQ(text.alarming, alarming) << level;
        EXPECT_EQ(text.pressureToolTip, toolTip) << level;
    }
}

TEST(DashboardText, EachCardHasItsReadingItsSourceAndTheKeysOfTheTick)
{
    OstrelData data;
    data.claudeSessions = 3;
    data.codexSessions = 2;
    data.fan = { { "mcp", 12 } };
    data.accuracy = { { "sessions", "process table; by program" } };
    DashboardFacts facts { .native = { .swapUsedMB = 1536,
                               .swapTotalMB = 4096,
                               .ncpu = 8,
                               .usedBytes = 11.5 * gb,
                               .totalBytes = 15.5 * gb },
        .cpu = 16.5,
        .nativeInterval = platform::Seconds(3),
        .snapshotAge = "4s ago",
        .serverChecked = true };
    const DashboardText text = dashboardText(facts, data);
    const std::string tick = " · native · 3s tick. Detailed sources: system tab.";
    EXPECT_EQ(
        text.metrics[0], (MetricText { "CPU", "17%", "8 cores", "host_cpu tick delta" + tick, "cpu", "" }));
    EXPECT_EQ(text.metrics[1],
        (MetricText { "MEMORY", "11.5 GB", "74% of 16 GB",
            "vm_stat + hw.memsize; native, used = active + wired + compressor" + tick, "mem", "mem-sub" }));
    EXPECT_EQ(text.metrics[2],
        (MetricText { "SWAP", "1.5 gb", "38% allocated · retained", "sysctl vm.swapusage; native" + tick,
            "swap", "swap-sub" }));
    EXPECT_EQ(text.metrics[3],
        (MetricText { "AGENTS", "5", "12 MCP processes",
            "process table; by program · 4s ago. Detailed sources: system tab.", "", "" }));
    EXPECT_EQ(text.snapshot, "collector snapshot · 4s ago");
    EXPECT_EQ(text.server, "server · connected");
}

TEST(DashboardText, SaysWhatASnapshotDoesNotTell)
{
    OstrelData data;
    data.fan = { { "node", 4 } };
    data.claudeSessions = std::numeric_limits<std::int64_t>::max();
    data.codexSessions = 1;
    const DashboardText text = dashboardText({}, data);
    EXPECT_EQ(text.metrics[3],
        (MetricText { "AGENTS", "9223372036854775807", "MCP count unavailable",
            "live Claude and Codex CLI · no snapshot yet. Detailed sources: system tab.", "", "" }));
    EXPECT_EQ(text.metrics[1].detail, "0% of 0 GB");
    EXPECT_EQ(text.snapshot, "collector snapshot · no snapshot yet");
    EXPECT_EQ(text.server, "server · not checked");
}

} // namespace
