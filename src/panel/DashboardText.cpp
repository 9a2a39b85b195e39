// SPDX-License-Identifier: Apache-2.0
#include "panel/DashboardText.h"

#include "core/Text.h"
#include "panel/LiveText.h"
#include "panel/ReadoutText.h"
#include "panel/SourcedRow.h"

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::string_view cpuSource = "host_cpu tick delta";
constexpr std::string_view sessionSource = "live Claude and Codex CLI";

std::string metricToolTip(std::string_view source, std::string_view age)
{
    return fmt::format("{} · {}. Detailed sources: system tab.", source, age);
}

MetricText agents(const OstrelData& data, std::string_view age)
{
    const auto mcp = fanCount(data, "mcp");
    return { .title = "AGENTS",
        .value = fmt::format("{}", sessionCount(data)),
        .detail = mcp ? fmt::format("{} MCP processes", *mcp) : "MCP count unavailable",
        .toolTip = metricToolTip(data.source("sessions").value_or(std::string(sessionSource)), age),
        .valueKey = {},
        .detailKey = {} };
}

} // namespace

DashboardText dashboardText(const DashboardFacts& facts, const OstrelData& data)
{
    const NativeStats& native = facts.native;
    const std::string_view word = pressureWord(native.pressureLevel);
    const std::string tick = nativeAge(facts.nativeInterval);
    const std::string snapshot = snapshotAgeOr(facts.snapshotAge);
    DashboardText text;
    text.pressure = fmt::format("OS PRESSURE · {}", upperCased(word));
    text.alarming = native.pressureLevel == 2 || native.pressureLevel == 4;
    text.pressureToolTip = word == "unknown"
        ? "macOS pressure unavailable; refresh to retry"
        : "Live macOS memory pressure. Retained swap alone does not indicate pressure.";
    text.metrics = { {
        { "CPU", LiveText::cpu(facts.cpu), fmt::format("{} cores", native.ncpu),
            metricToolTip(cpuSource, tick), "cpu", {} },
        { "MEMORY", LiveText::memory(native), LiveText::memoryShare(native),
            metricToolTip(memorySource, tick), "mem", "mem-sub" },
        { "SWAP", LiveText::swap(native), LiveText::swapShare(native), metricToolTip(swapSource, tick),
            "swap", "swap-sub" },
        agents(data, snapshot),
    } };
    text.snapshot = LiveText::snapshotAge(snapshot);
    text.server = facts.serverChecked ? "server · connected" : "server · not checked";
    return text;
}

} // namespace ostrel
