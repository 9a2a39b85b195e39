// SPDX-License-Identifier: Apache-2.0
#include "panel/InsightsText.h"

#include "collector/Maintenance.h"
#include "core/Text.h"
#include "panel/ReadoutText.h"

#include <algorithm>
#include <cstddef>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::int64_t alarmingSwap = 85; ///< percent
constexpr std::size_t mostHot = 4;
constexpr std::size_t mostHeavy = 2;
constexpr std::size_t mostReportLines = 14;

constexpr std::array<std::string_view, 7> readings { "ram", "swap", "load", "mcp", "sessions", "chromium",
    "duplicates" };

/// 0 for a family that the snapshot doesn't name.
std::int64_t countOf(const OstrelData& data, std::string_view key) { return fanCount(data, key).value_or(0); }

std::string swapText(const OstrelData::Swap& swap)
{
    return fmt::format("swap {:.2f}/{:.1f} gb ({}%)", swap.usedGB, swap.totalGB, swap.usedPct);
}

std::string sources(const OstrelData& data)
{
    std::vector<std::string> published;
    for (const std::string_view reading : readings)
        if (data.accuracy.contains(reading))
            published.emplace_back(reading);
    return published.empty() ? "sources: the collector published no method map this run"
                             : "readings with a published method: " + joined(published, " · ");
}

} // namespace

std::array<std::string, 4> collectorLines(
    std::string_view backendState, std::string_view backendLastSource, std::string_view pyPath)
{
    return { fmt::format("{} · source {}", backendState, backendLastSource),
        "snapshot: python3 ostrel.py json · analysis: python3 ostrel.py analyze",
        fmt::format("collector: {}", pyPath),
        "no listening port · no localhost server · no browser surface" };
}

std::array<std::string, 4> currentFacts(const OstrelData& data)
{
    return { fmt::format("{} · trend over {} saved samples: {}", swapText(data.swap), data.trend.samples,
                 data.trend.summary),
        fmt::format("mcp total {} · codex {} · claude {} · other {}", countOf(data, "mcp"),
            countOf(data, "codex_mcp"), countOf(data, "claude_mcp"), countOf(data, "other_mcp")),
        fmt::format("launchd storm {} · interval jobs {} · shell-first {}", data.launchd.runAtLoadInterval,
            data.launchd.intervalJobs, data.launchd.shellFirst),
        sources(data) };
}

DiagActionButton diagActionButton(const DiagAction& action)
{
    const std::string mem = memLabel(action.estMB);
    DiagActionButton button { .title = fmt::format("inspect · {} · {} observed", action.label, mem),
        .tooltip = action.reason,
        .accessibilityLabel = {} };
    if (!action.reason.empty())
        button.accessibilityLabel = fmt::format("{}, ~{}{} – {}", action.label, mem,
            action.risk.empty() ? std::string() : " · " + action.risk, action.reason);
    return button;
}

AnalysisView analysisView(bool running, const Diagnosis& diagnosis)
{
    if (running)
        return AnalysisView::running;
    if (!diagnosis.summary.empty())
        return AnalysisView::result;
    return diagnosis.text.empty() ? AnalysisView::idle : AnalysisView::raw;
}

PressureRead pressureRead(const OstrelData& data)
{
    return { fmt::format("{} · free {:.2f} gb · apps {}", swapText(data.swap), data.swap.freeGB,
                 memLabel(data.groups.app)),
        data.swap.usedPct >= alarmingSwap };
}

std::string hotNow(const OstrelData& data)
{
    std::vector<std::string> hot;
    for (std::size_t at = 0; at < std::min(mostHot, data.offenders.size()); ++at)
        hot.push_back(fmt::format("{} {}%", data.offenders[at].label, rounded(data.offenders[at].cpu)));
    return "hot now: " + (hot.empty() ? std::string("no hot process in snapshot") : joined(hot, " · "));
}

std::string maintenanceOrder(const OstrelData& data, std::string_view backendLastSource)
{
    std::vector<std::string> heavy;
    for (const auto& offender : data.offenders)
        if (offender.risk == "stateful" && heavy.size() < mostHeavy)
            heavy.push_back(
                fmt::format("{} {} / {}%", offender.label, memLabel(offender.rss), rounded(offender.cpu)));
    return fmt::format("current: Codex duplicate groups {} · collector {} · observed heavy app: {}",
        countOf(data, "codex_mcp_duplicates"), backendLastSource,
        heavy.empty() ? std::string("none obvious") : joined(heavy, " · "));
}

std::array<MaintenanceButton, 3> maintenanceButtons(const std::set<std::string, std::less<>>& running)
{
    std::array<MaintenanceButton, 3> buttons { {
        { Maintenance::auditKey, "1 audit MCP (read-only)",
            "list MCP processes whose parent is gone; read-only, nothing is stopped" },
        { Maintenance::previewKey, "2 preview own history",
            "show how much of the OSTREL history would be trimmed; nothing is deleted" },
        { Maintenance::compactKey, "compact own history…",
            "compact the OSTREL history after a confirmation" },
    } };
    for (MaintenanceButton& button : buttons) {
        if (!running.contains(button.key))
            continue;
        button.running = true;
        button.title = "⟳ running…";
        button.tooltip = "this action is running";
    }
    return buttons;
}

std::vector<std::string> reportLines(const std::deque<std::string>& report)
{
    if (report.empty())
        return { "no runs yet – click an action above.",
            "Audit never terminates discovered processes. History compaction reports exact bytes.",
            "Use diagnosis to inspect active pressure. Keep control of other apps in those apps." };
    const std::size_t count = std::min(mostReportLines, report.size());
    return { report.end() - static_cast<std::ptrdiff_t>(count), report.end() };
}

} // namespace ostrel
