// SPDX-License-Identifier: Apache-2.0
#include "panel/DashboardText.h"
#include "panel/BodyScreen.h"
#include "panel/ReadoutText.h"

#include <limits>
#include <tuple>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

constexpr auto most = std::numeric_limits<std::int64_t>::max();

OstrelData snapshot(const char* ts)
{
    OstrelData data;
    data.ts = ts;
    data.claudeSessions = 3;
    data.codexSessions = 2;
    data.fan = { { "mcp", 12 }, { "node", 4 } };
    data.verdict.level = "warn";
    data.accuracy = { { "sessions", "process table; by program" } };
    return data;
}

TEST(BodyScreen, TabsThatNeedASnapshotSayWhatIsMissing)
{
    using enum BodyScreen;
    using enum OstrelMode;
    const std::tuple<std::optional<OstrelData>, const char*, BodyChoice> cases[] {
        { std::nullopt, "native", { loading, "native monitor active · waiting for details" } },
        { std::nullopt, "error", { error, "collector unavailable · retry below" } },
        { snapshot(""), "local CLI", { empty, "No detailed snapshot available" } },
        { snapshot(""), "error", { empty, "No detailed snapshot available" } },
        { snapshot("12:00"), "error", { stale, "Snapshot stale · collector unavailable" } },
        { snapshot("12:00"), "local CLI", { tab, "" } },
    };
    for (const auto& [data, source, expected] : cases) {
        for (const OstrelMode mode : { overview, system, processes, sessions, diagnosis, cleanup })
            EXPECT_EQ(chooseBody(mode, data, source), expected) << words(mode).title << " " << source;
        for (const OstrelMode mode : { server, settings })
            EXPECT_EQ(chooseBody(mode, data, source), (BodyChoice { tab, "" })) << words(mode).title;
        EXPECT_EQ(chooseBody(automations, data, source),
            (BodyChoice { tab, "every scheduler on this Mac and the server, one list" }));
    }
}

TEST(ReadoutText, TellsWhatIsLiveAndWhatTheCollectorSaid)
{
    OstrelData data = snapshot("12:00");
    const NativeStats native { .swapUsedMB = 1, .swapTotalMB = 8, .load1 = 2.26 };
    EXPECT_EQ(readoutText(data, native, 16.5, "12s ago", false),
        "now: cpu 17% · swap 13% · load 2.3   |   collector (12s ago): 12 mcp / 5 sess · warn");
    EXPECT_EQ(readoutText(data, native, 0, std::nullopt, true),
        "now: cpu 0% · swap 13% · load 2.3   |   collector (no snapshot yet): 12 mcp / 5 sess · warn"
        " · stale, refresh to update");
    data.claudeSessions = most;
    EXPECT_NE(readoutText(data, native, 0, {}, false).find("/ 9223372036854775807 sess"), std::string::npos);
}

TEST(ReadoutText, WithoutACountOfMcpTheFamiliesAreSummed)
{
    const std::pair<std::vector<OstrelData::FanEntry>, std::int64_t> cases[] {
        { {}, 0 },
        { { { "node", 4 }, { "mcp_of_another", 5 } }, 9 },
        { { { "node", 4 }, { "mcp", 0 } }, 0 },
        { { { "node", most }, { "qmd", 1 } }, most },
    };
    for (const auto& [fan, expected] : cases) {
        OstrelData data;
        data.fan = fan;
        EXPECT_EQ(mcpCount(data), expected) << fan.size();
    }
}

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
    constexpr double gb = NativeStats::bytesPerGB;
    const DashboardFacts facts { .native = { .swapUsedMB = 1536,
                                     .swapTotalMB = 4096,
                                     .ncpu = 8,
                                     .usedBytes = 11.5 * gb,
                                     .totalBytes = 15.5 * gb },
        .cpu = 16.5,
        .nativeInterval = platform::Seconds(3),
        .snapshotAge = "4s ago",
        .serverChecked = true };
    const DashboardText text = dashboardText(facts, snapshot("12:00"));
    const std::string tick = " · native · 3s tick. Detailed sources: system tab.";
    const std::array<MetricText, 4> expected { {
        { "CPU", "17%", "8 cores", "host_cpu tick delta" + tick, "cpu", "" },
        { "MEMORY", "11.5 GB", "74% of 16 GB",
            "vm_stat + hw.memsize; native, used = active + wired + compressor" + tick, "mem", "mem-sub" },
        { "SWAP", "1.5 gb", "38% allocated · retained", "sysctl vm.swapusage; native" + tick, "swap",
            "swap-sub" },
        { "AGENTS", "5", "12 MCP processes",
            "process table; by program · 4s ago. Detailed sources: system tab.", "", "" },
    } };
    EXPECT_EQ(text.metrics, expected);
    EXPECT_EQ(text.snapshot, "collector snapshot · 4s ago");
    EXPECT_EQ(text.server, "server · connected");
}

TEST(DashboardText, SaysWhatASnapshotDoesNotTell)
{
    OstrelData data;
    data.fan = { { "node", 4 } };
    data.claudeSessions = most;
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
