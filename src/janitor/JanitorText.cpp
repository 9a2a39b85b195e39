// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorText.h"

#include "core/Text.h"
#include "janitor/ProtectionList.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::size_t mostListed = 3;
constexpr std::size_t mostReceipts = 6;
constexpr std::size_t mostCaches = 8;
constexpr double mbPerGb = 1024;
constexpr std::string_view agentsPrefix = "agents-";

struct GroupWords {
    std::string_view group;
    std::string_view title;
};
constexpr std::array<GroupWords, 5> groupWords { {
    { "agents-light", "agent logs, snapshots and paste cache older than 14 days" },
    { "agents-deep", "agent files older than 2 days and MCP packages no process loads" },
    { "agent-screenshots", "agent screenshots older than 7 days" },
    { "app-caches", "caches of the selected apps" },
    { "product-builds", "product build output older than 14 days" },
} };

struct TargetWords {
    std::string_view key;
    std::string_view title;
    std::array<std::string_view, 2> buttons;
    std::array<std::string_view, 3> notes;
};
constexpr TargetWords agentsWords { "agents", "agents · files they leave behind",
    { "review old files", "review more files" },
    { "light · logs, shell snapshots, paste cache and telemetry older than 14 days",
        "deep · the same older than 2 days, and MCP packages in ~/.npm/_npx no process loads",
        "session history (~/.codex/sessions, ~/.claude/projects) is never listed" } };
constexpr TargetWords mcpWords { "mcp", "mcp · server processes", { "review orphan MCP", "review idle MCP" },
    { "light · MCP processes whose parent is gone",
        "deep · also MCP processes under agent sessions idle for 90 min; the sessions stay",
        "agent processes and protected names are refused, whatever the depth" } };

std::string amountText(const JanitorFinding& finding)
{
    if (finding.estMB > 0)
        return finding.count > 0 ? fmt::format("{} · {}", mb(finding.estMB), finding.count)
                                 : mb(finding.estMB);
    return finding.count > 0 ? fmt::format("{}", finding.count) : std::string();
}

std::optional<JanitorButton> findingButton(const JanitorAction& action)
{
    switch (action.kind) {
    case JanitorAction::Kind::none:
        break;
    case JanitorAction::Kind::openTab:
        return JanitorButton { .title = fmt::format("open {}", oneLine(action.target)), .width = 220 };
    case JanitorAction::Kind::clean:
        return JanitorButton { .title = "open cleanup", .width = 220 };
    case JanitorAction::Kind::kill:
        return JanitorButton { .title = fmt::format("stop {} processes…", action.pids.size()), .width = 240 };
    }
    return std::nullopt;
}

TargetRow targetRow(const TargetWords& words, bool enabled)
{
    TargetRow row { .key = words.key,
        .title = words.title,
        .buttons = {},
        .notes = { words.notes.begin(), words.notes.end() },
        .listed = {} };
    for (std::size_t at = 0; at < depths.size(); ++at)
        row.buttons[at] = { .title = std::string(words.buttons[at]),
            .enabled = enabled,
            .tooltip = fmt::format(
                "{} preview: inspect the exact list and volume before confirming any action", depths[at]),
            .identifier = fmt::format("cleanup-{}-{}", words.key, depths[at]) };
    return row;
}

std::vector<std::string> fileLines(const JanitorPreview& preview)
{
    std::vector<std::string> lines;
    for (const JanitorFile& file : firstOf(preview.files, mostListed))
        lines.push_back(fmt::format("{} · {} days · {}", mb(file.mb), file.ageDays, oneLine(file.path)));
    return lines;
}

TargetRow agentsRow(const JanitorState& state)
{
    TargetRow row = targetRow(agentsWords, !state.running);
    for (std::size_t at = 0; at < depths.size(); ++at)
        if (const auto found = state.previews.find(agentGroups[at]); found != state.previews.end())
            row.listed.push_back(
                { fmt::format("{} · {}", depths[at], filesText(found->second)), fileLines(found->second) });
    return row;
}

TargetRow mcpRow(const JanitorState& state)
{
    TargetRow row = targetRow(mcpWords, !state.running);
    for (const std::string_view depth : depths) {
        const auto found = state.processPreviews.find(depth);
        if (found == state.processPreviews.end())
            continue;
        const JanitorKillPreview& preview = found->second;
        ListedLines listed {
            fmt::format("{} · {} processes · {} mb", depth, preview.count(), preview.rssMB()), {}
        };
        for (const JanitorProcess& process : firstOf(preview.allowed, mostListed))
            listed.lines.push_back(processLine(process, true));
        row.listed.push_back(std::move(listed));
    }
    return row;
}

GroupRow groupRow(
    const JanitorState& state, const std::string& group, const std::vector<std::string>& cacheTargets)
{
    GroupRow row { .group = group,
        .title = oneLine(shownTitle(state, group)),
        .amount = {},
        .clean = { .title = "clean…", .width = 110, .identifier = "cleanup-group-" + group },
        .selected = {},
        .error = {},
        .lines = {} };
    if (group == cachesGroup)
        row.selected = "selected: "
            + (cacheTargets.empty() ? "none chosen; pick caches in settings" : joined(cacheTargets, " · "));
    const auto found = state.previews.find(group);
    if (found == state.previews.end())
        return row;
    row.error = found->second.error;
    if (row.error.empty()) {
        row.amount = filesText(found->second);
        row.lines = fileLines(found->second);
    }
    return row;
}

JanitorButton receiptsButton() { return { .title = "open receipts", .width = 150 }; }

} // namespace

std::string mb(double value)
{
    return value < mbPerGb ? fmt::format("{:.0f} mb", value) : fmt::format("{:.1f} gb", value / mbPerGb);
}

std::string_view groupTitle(std::string_view group)
{
    const auto* found = std::ranges::find(groupWords, group, &GroupWords::group);
    return found == groupWords.end() ? group : found->title;
}

std::string shownTitle(const JanitorState& state, std::string_view group)
{
    const auto found = state.groups.titles.find(group);
    return found == state.groups.titles.end() ? std::string(groupTitle(group)) : found->second;
}

bool isAgentsGroup(std::string_view group) { return group.starts_with(agentsPrefix); }

std::string filesText(const JanitorPreview& preview)
{
    return fmt::format("{} files · {}", preview.count, mb(preview.sizeMB));
}

std::string processLine(const JanitorProcess& process, bool withReason)
{
    const std::string line
        = fmt::format("pid {} · {} · {} mb", process.pid, oneLine(process.name), process.rssMB);
    return withReason ? fmt::format("{} · {}", line, oneLine(process.reason)) : line;
}

FindingCard findingCard(const JanitorFinding& finding)
{
    return { .level = upperCased(finding.level),
        .color = finding.levelColor(),
        .title = finding.title,
        .amount = amountText(finding),
        .seen = finding.seen,
        .source = fmt::format("source: {}", finding.source),
        .proposal = fmt::format("proposal: {}", finding.proposal),
        .accessibilityLabel = fmt::format("{}, {}, {}", finding.level, finding.title, finding.seen),
        .button = findingButton(finding.action) };
}

FindingsBody findingsBody(const JanitorState& state)
{
    FindingsBody body { .title = "findings",
        .refresh = { .title = state.running ? "reading…" : "refresh findings",
            .width = 170,
            .enabled = !state.running,
            .active = state.running },
        .status = state.status,
        .lastAction = state.lastAction,
        .nothing = {},
        .cards = {},
        .cleanupLine = "cleanup and its receipts have their own tab",
        .openCleanup = { .title = "open cleanup", .width = 170 } };
    if (state.findings.empty() && !state.running)
        body.nothing = "nothing to report: swap, duplicates, idle sessions, agent leftovers, orphan mcp and "
                       "the disk are all inside their thresholds";
    for (const JanitorFinding& finding : state.findings)
        body.cards.push_back(findingCard(finding));
    return body;
}

CleanupBody cleanupBody(const JanitorState& state, const std::vector<std::string>& cacheTargets)
{
    CleanupBody body { .title = "cleanup",
        .hint = "press a depth · the list opens · press again to act",
        .status = state.status,
        .lastAction = state.lastAction,
        .targets = { agentsRow(state), mcpRow(state) },
        .groupsTitle = {},
        .groups = {},
        .receiptsTitle = "receipts · every action this app performed",
        .receipts = firstOf(state.receiptLines, mostReceipts),
        .openReceipts = receiptsButton() };
    for (const std::string& group : state.groups.names)
        if (!isAgentsGroup(group))
            body.groups.push_back(groupRow(state, group, cacheTargets));
    if (!body.groups.empty())
        body.groupsTitle = "more groups · the same two presses";
    if (body.receipts.empty())
        body.receipts.emplace_back("no action yet; a stop or a cleanup writes a line here");
    return body;
}

JanitorSection janitorSection(const JanitorState& state, const std::vector<std::string>& displayList,
    const std::vector<std::string>& cacheTargets)
{
    JanitorSection section { .title = "janitor",
        .note = "findings are read on a press, nothing runs on a timer; every stop and every cleanup writes "
                "a receipt",
        .protectedTitle = "protected processes · this app never stops these",
        .rows = {},
        .placeholder = "add a name to protect",
        .protect = { .title = "protect this name", .width = 180 },
        .cachesTitle = "caches the cleanup group is allowed to empty",
        .picked = cacheTargets.empty() ? "none chosen; the group deletes nothing until a cache is picked"
                                       : joined(cacheTargets, " · "),
        .listCaches = {},
        .caches = {},
        .openReceipts = receiptsButton() };
    for (const std::string& name : displayList) {
        const bool locked = ProtectionList::isLocked(name);
        section.rows.push_back({ .name = name,
            .text = locked ? name + " · locked by rule 44" : name,
            .locked = locked,
            .unprotect = { .title = "unprotect…", .width = 140 } });
    }
    if (state.cacheCandidates.empty())
        section.listCaches = JanitorButton { .title = "list the biggest caches", .width = 220 };
    for (const CacheCandidate& cache : firstOf(state.cacheCandidates, mostCaches)) {
        const bool picked = std::ranges::find(cacheTargets, cache.name) != cacheTargets.end();
        section.caches.push_back({ .name = cache.name,
            .text = fmt::format("{} · {}", oneLine(cache.name), mb(cache.sizeMB)),
            .picked = picked,
            .pick = { .title = picked ? "remove" : "pick", .width = 120 } });
    }
    return section;
}

} // namespace ostrel
