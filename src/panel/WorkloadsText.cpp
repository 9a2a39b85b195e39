// SPDX-License-Identifier: Apache-2.0
#include "panel/WorkloadsText.h"

#include "core/Text.h"

#include <algorithm>
#include <functional>
#include <initializer_list>

#include <fmt/format.h>

namespace ostrel {

namespace {

using Proc = OstrelData::Proc;

constexpr double warmCpu = 15; ///< percent of one core
constexpr double hotCpu = 40;

bool mentions(const Proc& proc, std::initializer_list<std::string_view> words)
{
    const std::string hay = lowered(fmt::format("{} {}", proc.name, proc.cmd));
    return std::ranges::any_of(
        words, [&](std::string_view word) { return hay.find(word) != std::string::npos; });
}

/// Whether a filter shows a process.
bool shows(std::string_view filter, const Proc& proc, const ProtectionRules& rules)
{
    if (filter == "agents")
        return mentions(proc, { "codex", "claude" });
    if (filter == "mcp")
        return mentions(proc, { "mcp" });
    return filter != "stoppable" || !rules.protects(proc.name, proc.cmd);
}

CpuColor cpuColor(double cpu)
{
    if (cpu >= hotCpu)
        return CpuColor::redBright;
    return cpu >= warmCpu ? CpuColor::amber : CpuColor::muted;
}

} // namespace

std::vector<std::size_t> filteredProcesses(
    const std::vector<Proc>& procs, std::string_view filter, const ProtectionRules& rules)
{
    std::vector<std::size_t> places;
    for (std::size_t at = 0; at < procs.size(); ++at)
        if (shows(filter, procs[at], rules))
            places.push_back(at);
    if (filter == "cpu")
        std::ranges::stable_sort(places, std::greater(), [&](std::size_t at) { return procs[at].cpu; });
    else
        std::ranges::stable_sort(places, std::greater(), [&](std::size_t at) { return procs[at].rss; });
    return places;
}

ProcessRow processRow(const Proc& proc, bool isProtected)
{
    ProcessRow row { .pid = proc.pid,
        .name = proc.name,
        .tip = proc.cmd.empty() ? proc.name : proc.cmd,
        .nameLabel = {},
        .tag = isProtected ? "PROT" : upperCased(proc.grp),
        .tagTip = isProtected ? fmt::format("protected: this app never stops {}", proc.name)
                              : "can be stopped with a confirmation",
        .cpu = fmt::format("{:.0f}%", proc.cpu),
        .cpuColor = cpuColor(proc.cpu),
        .memory = memLabel(proc.rss),
        .button = isProtected ? "protected" : "stop…",
        .buttonTip = isProtected ? "Agent and system processes stay protected"
                                 : "Preview this exact process, then confirm a graceful stop",
        .isProtected = isProtected };
    if (row.tip != row.name)
        row.nameLabel = fmt::format("{} – {}", row.name, row.tip);
    return row;
}

std::array<ProcessMenuLine, 4> processMenu(const Proc& proc, bool isProtected)
{
    return { {
        { .title = "process details", .shown = fmt::format("process · {}", proc.name), .strong = true },
        { .title = "",
            .shown = fmt::format("pid {} · {} rss", proc.pid, memLabel(proc.rss)),
            .size = 10,
            .quiet = true },
        {},
        { .title = isProtected ? "why protected?" : "stop process",
            .shown
            = isProtected ? "why is this process protected?" : "stop this process (SIGTERM, asks first)",
            .enabled = true },
    } };
}

} // namespace ostrel
