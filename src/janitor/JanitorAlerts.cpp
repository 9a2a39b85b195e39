// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorAlerts.h"

#include "core/Text.h"
#include "janitor/JanitorText.h"

#include <vector>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::size_t mostListed = 8;
/// Signs of a command line that a question shows.
constexpr std::size_t longestCommand = 300;
constexpr std::string_view eachGetsSigterm
    = "SIGTERM is sent to each; a receipt with pid, name, memory and time is written";

using Lines = std::vector<std::string>;

platform::Alert warning(std::string title, const Lines& lines, std::string act)
{
    return { .title = std::move(title),
        .text = joined(lines, "\n"),
        .buttons = { std::move(act), "cancel" },
        .critical = true,
        .cancel = 1 };
}

void addProcesses(Lines& lines, const JanitorKillPreview& preview, bool withReason, std::string_view order)
{
    for (const JanitorProcess& process : firstOf(preview.allowed, mostListed))
        lines.push_back(processLine(process, withReason));
    if (preview.count() > mostListed)
        lines.push_back(fmt::format("and {} more{}", preview.count() - mostListed, order));
    if (preview.refused.empty())
        return;
    Lines names;
    for (const JanitorProcess& process : preview.refused)
        names.push_back(oneLine(process.name));
    lines.emplace_back();
    lines.push_back("protected and untouched: " + joined(names, ", "));
}

} // namespace

platform::Alert cleanAlert(std::string_view group, const JanitorPreview& preview)
{
    Lines lines { oneLine(preview.title), "" };
    for (const JanitorFile& file : firstOf(preview.files, mostListed))
        lines.push_back(fmt::format("{} · {} d · {}", mb(file.mb), file.ageDays, oneLine(file.path)));
    constexpr auto most = static_cast<std::int64_t>(mostListed);
    if (preview.count > most)
        lines.push_back(fmt::format("and {} more, the largest first", preview.count - most));
    lines.emplace_back();
    lines.emplace_back("the files are removed from disk, a receipt is written to Ostrel/receipts");
    if (isAgentsGroup(group))
        lines.emplace_back("session history of Codex and Claude is not in this list and is never deleted");
    return warning(fmt::format("delete {}", filesText(preview)), lines, "delete");
}

platform::Alert stopMCPAlert(std::string_view depth, const JanitorKillPreview& preview)
{
    Lines lines { fmt::format("mcp · {}", depth), "" };
    addProcesses(lines, preview, true, ", the largest first");
    lines.emplace_back();
    lines.emplace_back(eachGetsSigterm);
    if (depth == depths[1])
        lines.emplace_back(
            "the agent sessions keep running; their MCP tools come back when a session restarts");
    return warning(
        fmt::format("stop {} mcp processes · {} mb", preview.count(), preview.rssMB()), lines, "stop");
}

platform::Alert stopFindingAlert(std::string_view title, const JanitorKillPreview& preview)
{
    Lines lines { oneLine(title), "" };
    addProcesses(lines, preview, false, "");
    lines.emplace_back();
    lines.emplace_back(eachGetsSigterm);
    return warning(fmt::format("stop {} processes · {} mb", preview.count(), preview.rssMB()), lines, "stop");
}

platform::Alert stopOneAlert(std::string_view name, const JanitorProcess& process)
{
    return warning(fmt::format("stop {} · pid {}", oneLine(name), process.pid),
        { oneLine(firstSigns(process.cmd, longestCommand)), "", fmt::format("memory {} mb", process.rssMB),
            "SIGTERM is sent; a receipt with pid, name, memory and time is written" },
        "stop");
}

platform::Alert unprotectAlert(std::string_view name)
{
    return warning(fmt::format("remove {} from the protection list", name),
        { fmt::format("after this the janitor may offer to stop a process named {}.", name),
            "agent names claude and codex and OSTREL itself stay protected whatever this list says." },
        "remove protection");
}

} // namespace ostrel
