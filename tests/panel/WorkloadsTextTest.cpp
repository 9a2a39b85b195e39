// SPDX-License-Identifier: Apache-2.0
#include "panel/WorkloadsText.h"

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Proc = OstrelData::Proc;

const ProtectionRules rules({ "claude", "codex", "finder" });

TEST(WorkloadsText, EachFilterShowsItsOwnTheLargestFirstAndAlikeOnesInTheCollectorsOrder)
{
    const std::vector<Proc> procs {
        { .rss = 10, .pid = "1", .name = "node", .cmd = "node server", .cpu = 3 },
        { .rss = 90, .pid = "2", .name = "Finder", .cmd = "", .cpu = 0.5 },
        { .rss = 10, .pid = "3", .name = "sh", .cmd = "sh -c CODEX-runner", .cpu = 120 },
        { .rss = 50, .pid = "4", .name = "Claude", .cmd = "/opt/x", .cpu = 3 },
        { .rss = 70, .pid = "5", .name = "npx", .cmd = "npx my-MCP-server", .cpu = 0 },
    };
    const std::pair<const char*, const char*> cases[] {
        { "memory", "25413" },
        { "cpu", "31425" },
        { "agents", "43" },
        { "mcp", "5" },
        { "stoppable", "513" },
        { "no such key", "25413" },
    };
    for (const auto& [filter, expected] : cases) {
        std::string shown;
        for (const std::size_t at : filteredProcesses(procs, filter, rules))
            shown += procs[at].pid;
        EXPECT_EQ(shown, expected) << filter;
    }
}

TEST(WorkloadsText, ARowSaysWhatItIsAndWhetherItCanBeStopped)
{
    const Proc proc { .rss = 1536, .pid = "7", .name = "node", .grp = "runtime", .cmd = "node x", .cpu = 3 };
    const ProcessRow open = processRow(proc, false);
    const ProcessRow kept = processRow(proc, true);
    const std::tuple<const char*, std::string, std::string> cases[] {
        { "tag", open.tag, "RUNTIME" },
        { "protected tag", kept.tag, "PROT" },
        { "tag's tip", open.tagTip, "can be stopped with a confirmation" },
        { "protected tag's tip", kept.tagTip, "protected: this app never stops node" },
        { "button", open.button, "stop…" },
        { "protected button", kept.button, "protected" },
        { "button's tip", open.buttonTip, "Preview this exact process, then confirm a graceful stop" },
        { "protected button's tip", kept.buttonTip, "Agent and system processes stay protected" },
        { "memory", open.memory, "1.5 gb" },
        { "tip", open.tip, "node x" },
        { "label", open.nameLabel, "node – node x" },
        { "tip without a command", processRow({ .name = "node" }, false).tip, "node" },
        { "label without a command", processRow({ .name = "node" }, false).nameLabel, "" },
        { "label of a bare command", processRow({ .name = "node", .cmd = "node" }, false).nameLabel, "" },
    };
    for (const auto& [what, told, expected] : cases)
        EXPECT_EQ(told, expected) << what;
    EXPECT_TRUE(kept.isProtected && !open.isProtected);
}

TEST(WorkloadsText, ProcessorTimeIsColouredFromTheEdgesOn)
{
    using enum CpuColor;
    const std::tuple<double, const char*, CpuColor> cases[] { { 0, "0%", muted }, { 14.9, "15%", muted },
        { 15, "15%", amber }, { 39.9, "40%", amber }, { 40, "40%", redBright },
        { 799.6, "800%", redBright } };
    for (const auto& [cpu, text, color] : cases) {
        const ProcessRow row = processRow({ .cpu = cpu }, false);
        EXPECT_EQ(row.cpu, text);
        EXPECT_EQ(row.cpuColor, color) << cpu;
    }
}

TEST(WorkloadsText, ARowsMenuLeadsToTheStopOrToTheReasonWhyNot)
{
    const Proc proc { .rss = 100, .pid = "7", .name = "node" };
    using Lines = std::vector<std::pair<std::string, std::string>>;
    const auto lines = [&](bool isProtected) {
        Lines all;
        for (const ProcessMenuLine& line : processMenu(proc, isProtected))
            all.emplace_back(line.title, line.shown + (line.enabled ? "!" : ""));
        return all;
    };
    Lines expected { { "process details", "process · node" }, { "", "pid 7 · 100 mb rss" }, { "", "" },
        { "stop process", "stop this process (SIGTERM, asks first)!" } };
    EXPECT_EQ(lines(false), expected);
    expected.back() = { "why protected?", "why is this process protected?!" };
    EXPECT_EQ(lines(true), expected);
}

} // namespace
