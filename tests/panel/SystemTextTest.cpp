// SPDX-License-Identifier: Apache-2.0
#include "panel/SystemText.h"

#include <tuple>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace SystemItem;

constexpr double gb = NativeStats::bytesPerGB;

/// A tab's items, one text each, without the gaps.
struct Printed {
    std::string operator()(const Gap&) const { return {}; }
    std::string operator()(const Section& row) const { return "# " + row.title; }
    std::string operator()(const SourcedRow& row) const
    {
        return fmt::format("{}: {} [{}]", row.label, row.value, row.source.text);
    }
    std::string operator()(const Pair& row) const { return fmt::format("{}: {}", row.label, row.value); }
    std::string operator()(const SourceLine& line) const { return fmt::format("[{}]", line.text); }
    std::string operator()(const Free& row) const { return fmt::format("{} ({})", row.text, row.level); }
    std::string operator()(const Note& note) const { return note.text; }
    std::string operator()(const Sparkline& row) const { return fmt::format("~ {}", row.caption); }
    std::string operator()(const Gauges&) const { return "o o o"; }
    std::string operator()(const Model& model) const
    {
        return fmt::format("{} | {} | {}", model.title, model.readings, model.meaning);
    }
};

using Lines = std::vector<std::string>;

Lines printed(const SystemFacts& facts, const OstrelData& data = {}, const OstrelHistory& history = {})
{
    Lines lines;
    for (const SystemRow& row : systemText(facts, data, history))
        if (std::string line = std::visit(Printed(), row); !line.empty())
            lines.push_back(std::move(line));
    return lines;
}

/// The one line that begins like that; empty without one.
std::string line(const Lines& lines, const std::string& start)
{
    std::string found;
    for (const std::string& each : lines)
        if (each.starts_with(start))
            found += each;
    return found;
}

OstrelData observed(const char* observation)
{
    return OstrelData::parse(*json::parseObject(fmt::format(R"({{"system_observation":{}}})", observation)));
}

TEST(SystemText, AWholeTabStandsInItsOrder)
{
    OstrelData data = observed(R"({"disk":{"free_gb":61.25,"total_gb":228},
        "battery":{"percent":80.0,"power":"AC","detail":"charging"},
        "network":[{"interface":"eth0","received":1610612736,"sent":536870912}]})");
    data.fan = { { "chromium", 21 }, { "codex_mcp_duplicates", 2 }, { "codex_mcp_duplicate_mb", 1536 } };
    data.chromiumBundles = { { "Arc", 12 }, { "Chrome", 7 }, { "Slack", 1 }, { "Code", 1 } };
    data.accuracy = { { "chromium", "process table; by program" }, { "duplicates", "arguments" } };
    data.history = { { 1, 2, 3, "11:00" }, { 40, 51, 6, "11:01" } };
    data.historyState = "recorded";
    const OstrelHistory history { .points = { { 100 }, { 101 }, { 109 } }, .restored = 2 };
    const SystemFacts facts { .machine = { "Debian 12", 9000, platform::ThermalState::fair, true },
        .native = { .swapUsedMB = 512,
            .swapTotalMB = 4096,
            .load1 = 2.999,
            .ncpu = 4,
            .pressureLevel = 2,
            .usedBytes = 11.5 * gb,
            .totalBytes = 16 * gb,
            .freeMB = 2048 },
        .nativeInterval = platform::Seconds(5),
        .panelInterval = platform::Seconds(15),
        .samples = 60,
        .snapshotAge = "3s ago",
        .backendSource = "local CLI",
        .backendState = "snapshot 90 ms",
        .barParts = { "swap", "cpu" },
        .barTitle = " cpu 3% · swap 13%",
        .historyFilePath = "/home/a/history.jsonl" };
    const std::string memory = "vm_stat + hw.memsize";
    const Lines expected { "# this Mac · power, storage & network",
        "macOS: Debian 12 [src: ProcessInfo · native]",
        "uptime: 2.5 hours [src: ProcessInfo.systemUptime · native]",
        "thermal pressure: fair [src: ProcessInfo.thermalState · native]",
        "low power mode: on [src: ProcessInfo.isLowPowerModeEnabled · native]",
        "Data volume: 61.2 GB free / 228.0 GB [src: statvfs /System/Volumes/Data · 3s ago]",
        "battery: 80% · AC · charging [src: pmset -g batt · 3s ago]",
        "eth0: 1.5 GB received · 0.5 GB sent [src: netstat link bytes · cumulative since interface reset · "
        "3s "
        "ago]",
        "# cpu load · 60 samples at 5s · this run", "~ cpu load", "[src: host_cpu tick delta, native · live]",
        "o o o", "# system · every row names its source", "load (1m): 3.00 · 74% of 4 cores",
        "[src: getloadavg + hw.ncpu · native · 5s tick]",
        "memory pressure: warn [src: sysctl kern.memorystatus_vm_pressure_level · native · 5s tick]",
        "2.0 gb free (normal)", "[src: " + memory + " · native · 5s tick]",
        "memory used: 11.5 gb of 16 gb · 72% [src: " + memory + " · native · 5s tick]",
        "swap used: 0.50/4.0 gb · 512/4096 mb [src: sysctl vm.swapusage · native · 5s tick]",
        "chromium helpers: 21 · Arc 12 · Chrome 7 · Slack 1 [src: process table · 3s ago]",
        "codex mcp duplicates: 2 · 1.5 gb [src: arguments · 3s ago]",
        "menu bar: cpu · swap ·  cpu 3% · swap 13%", "full data source: local CLI · snapshot 90 ms · 3s ago",
        "# saved history · local", "recorded: 2 valid samples", "latest record: 11:01",
        "recorded swap / load / MCP: 40% / 51% / 6",
        "Collector history is saved when detailed snapshots run.", "# dashboard history · local · 24 h",
        "minute points kept: 3 of 1440", "restored at launch · this run: 2 · 1",
        "covered span: 10 min, gaps included",
        "[src: native readings once a minute, /home/a/history.jsonl · written whether or not the panel is "
        "open]",
        "MEASUREMENT MODEL | menu bar is native: sysctl/vm.swapusage + host_cpu every 5.0s. Detailed panel "
        "snapshots use one short-lived local CLI process every 15.0s while open. | swap is memory stored on "
        "disk, distinct from app RSS. load can exceed 100% because it is runnable work divided by 4 CPU "
        "cores." };
    EXPECT_EQ(printed(facts, data, history), expected);
}

TEST(SystemText, WhatNothingIsKnownOfIsToldInWords)
{
    const Lines lines = printed({});
    for (const char* expected : { "thermal pressure: unknown", "low power mode: unavailable",
             "Data volume: unavailable [src: statvfs /System/Volumes/Data · not read]",
             "battery: unavailable [src: pmset -g batt · not read]",
             "network counters: unavailable [src: netstat link counters · not read]",
             "load (1m): 0.00 · 0% of 0 cores",
             "memory pressure: – [not measured this run · sysctl kern.memorystatus_vm_pressure_level]",
             "swap used: 0.00/0.0 gb · 0/0 mb",
             "chromium helpers: – [not measured · the collector publishes no method for this reading]",
             "codex mcp duplicates: – [not measured ·", "menu bar: swap · ",
             "full data source:  ·  · no snapshot yet", "unavailable: 0 valid samples",
             "Collector history could not be saved or read. Refresh to retry; current readings remain "
             "separate.",
             "covered span: recording the first minute", "restored at launch · this run: 0 · 0" })
        EXPECT_TRUE(line(lines, expected).starts_with(expected)) << expected;
    EXPECT_EQ(line(lines, "latest record"), "");
}

TEST(SystemText, AnObservationOfWrongTypesCountsAsNone)
{
    const std::tuple<const char*, std::string, const char*> cases[] {
        { "[1]", "Data volume", "unavailable" },
        { R"({"disk":[61,228]})", "Data volume", "unavailable" },
        { R"({"disk":{"free_gb":"61","total_gb":228}})", "Data volume", "unavailable" },
        { R"({"disk":{"free_gb":61}})", "Data volume", "unavailable" },
        { R"({"disk":{"free_gb":0,"total_gb":0.04}})", "Data volume", "0.0 GB free / 0.0 GB" },
        { R"({"battery":80})", "battery", "unavailable" },
        { R"({"battery":{"percent":80.5,"power":"AC"}})", "battery", "unavailable" },
        { R"({"battery":{"percent":true}})", "battery", "unavailable" },
        { R"({"battery":{"percent":7,"power":1,"detail":null}})", "battery", "7% ·  · " },
        { R"({"network":{"interface":"eth0"}})", "network counters", "unavailable" },
        { R"({"network":[]})", "network counters", "unavailable" },
        { R"({"network":["eth0",null]})", "network counters", "unavailable" },
        { R"({"network":[3,{"interface":4,"received":"1","sent":true}]})", "interface",
            "0.0 GB received · 0.0 GB sent" },
    };
    for (const auto& [observation, row, value] : cases) {
        const std::string found = line(printed({}, observed(observation)), row + ": ");
        EXPECT_EQ(found.substr(0, found.find(" [src")), row + ": " + value) << observation;
    }
}

TEST(SystemText, RowsAtTheirEdges)
{
    const std::pair<SystemFacts, const char*> native[] {
        { { .native = { .pressureLevel = 3 } }, "memory pressure: – [not measured this run · " },
        { { .native = { .pressureLevel = -2 } }, "memory pressure: – [not measured this run · " },
        { { .native = { .pressureLevel = 9 } }, "memory pressure: critical [src: " },
        { { .native = { .load1 = 5, .ncpu = 0 } }, "load (1m): 5.00 · 500% of 0 cores" },
        { { .native = { .swapUsedMB = 3072, .swapTotalMB = 2048 } },
            "swap used: 3.00/2.0 gb · 3072/2048 mb" },
        { { .machine = { .lowPower = false } }, "low power mode: off" },
        { { .machine = { .thermal = platform::ThermalState::nominal } }, "thermal pressure: normal" },
        { { .machine = { .thermal = platform::ThermalState::serious } }, "thermal pressure: serious" },
        { { .machine = { .thermal = platform::ThermalState::critical } }, "thermal pressure: critical" },
        { { .machine = { .thermal = platform::ThermalState { 9 } } }, "thermal pressure: unknown" },
        { { .barParts = { "mcp", "load", "unheard" } }, "menu bar: load · mcp · " },
    };
    for (const auto& [facts, expected] : native)
        EXPECT_TRUE(line(printed(facts), expected).starts_with(expected)) << expected;

    for (const auto& [mb, free, mark] : { std::tuple { 0, "0 mb free (crit)", "▲ " },
             { 499, "499 mb free (crit)", "▲ " }, { 500, "500 mb free (warn)", "△ " },
             { 1499, "1.5 gb free (warn)", "△ " }, { 1500, "1.5 gb free (normal)", "" } })
        for (const bool marked : { false, true }) {
            const Lines lines = printed({ .native = { .freeMB = mb }, .differentiateWithoutColor = marked });
            const std::string expected = marked ? std::string(mark) + free : free;
            EXPECT_EQ(line(lines, expected), expected);
        }

    const Lines linked = printed({}, observed(R"({"network":[{"interface":"a1"},{"interface":"b2"},
        {"interface":"c3"},{"interface":"d4"},{"interface":"e5"}]})"));
    EXPECT_NE(line(linked, "d4: "), "") << "four links of many";
    EXPECT_EQ(line(linked, "e5: ") + line(linked, "network counters: "), "");

    OstrelData data;
    data.fan = { { "chromium", 3 }, { "codex_mcp_duplicates", 0 }, { "codex_mcp_duplicate_mb", 0 } };
    EXPECT_TRUE(line(printed({}, data), "chromium helpers: 3 [src: not published").size());
    EXPECT_TRUE(line(printed({}, data), "codex mcp duplicates: 0 [src: not published").size());

    for (const auto& [state, stale, expected] :
        { std::tuple { "recorded", true, "stale: 0" }, { "recorded", false, "recorded: 0" },
            { "unavailable", true, "unavailable: 0" }, { "rotating", true, "rotating: 0" } }) {
        data.historyState = state;
        EXPECT_NE(line(printed({ .snapshotStale = stale }, data), expected), "") << expected;
    }
}

TEST(SourcedRow, NamesTheSourceBeforeItsFirstSemicolonAndSaysWhenNothingWasMeasured)
{
    struct Case {
        std::optional<std::string> value, source;
        std::string shown, line, toolTip;
    };
    const char* none = "the collector published no method for this reading";
    const Case cases[] {
        { "7", "ps ; by name; all users", "7", "src: ps · 3s ago", "ps ; by name; all users" },
        { "7", " statvfs ", "7", "src: statvfs · 3s ago", " statvfs " },
        { "7", {}, "7", "src: not published by the collector", none },
        { "", "ps", "", "src: ps · 3s ago", "ps" },
        { {}, "ps; by name", "–", "not measured this run · ps", "ps; by name" },
        { {}, {}, "–", "not measured · the collector publishes no method for this reading", none },
    };
    for (const Case& c : cases)
        EXPECT_EQ(kvSourced("label", c.value, c.source, "3s ago"),
            (SourcedRow { "label", c.shown, { c.line, c.toolTip } }))
            << c.line;
    EXPECT_EQ(sourceLine("a;b", "live"), (SourceLine { "src: a · live", "a;b\nlive" }));
    EXPECT_EQ(sourceLine({}, "live"), (SourceLine { "src: not published by the collector", none }));
}

} // namespace
