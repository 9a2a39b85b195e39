// SPDX-License-Identifier: Apache-2.0
#include "panel/Workloads.h"
#include "panel/WorkloadsText.h"

#include "support/FakeAlerts.h"
#include "support/FakePanel.h"
#include "support/FakeProcessSignals.h"
#include "support/FakeWorkspace.h"
#include "support/StateBench.h"

#include <tuple>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Proc = OstrelData::Proc;
using Lines = std::vector<std::string>;

struct WorkloadsBench : StateBench {
    WorkloadsBench()
    {
        workloads.connect(panel);
        maintenance.connect(panel);
        snapshots.connect(panel, panel);
        signals.running[70] = 5;
    }

    /// A child of the janitor's, then the one of the snapshot that follows.
    void killAnswered(const std::string& pid, const std::string& name, const std::string& answered)
    {
        answer(answered);
        workloads.killProcess(pid, name, name);
        for (int turn = 0; turn < 4; ++turn)
            deliver();
    }

    /// The subcommands of the scripts that ran since the last call.
    [[nodiscard]] Lines ran()
    {
        Lines commands;
        for (const platform::ChildRequest& request : std::exchange(children.requests, {}))
            commands.push_back(request.arguments.at(1));
        return commands;
    }

    FakePanel panel;
    FakeAlerts alerts;
    FakeWorkspace workspace;
    FakeProcessSignals signals;
    JanitorTab janitor { { { time, globalQueue, files, bundle, time, children, signals }, defaults, alerts,
        workspace } };
    Maintenance maintenance { { time, globalQueue, time, alerts }, runner, snapshots };
    Workloads workloads { { time, alerts, janitor, maintenance, snapshots } };
};

constexpr const char* allowed
    = R"({"allowed":[{"pid":70,"name":"node","cmd":"node x","rss_mb":9,"start":5}]})";

TEST(Workloads, AProtectedProcessIsExplainedInATurnOfItsOwnAndNothingElseHappens)
{
    const std::pair<const char*, const char*> cases[] { { "Finder", "" }, { "sh", "sh -c claude" },
        { "x", "/System/x" } };
    for (const auto& [name, cmd] : cases) {
        WorkloadsBench bench;
        bench.workloads.killProcess("70", name, cmd);
        EXPECT_TRUE(bench.alerts.asked.empty()) << "not in the handler of the control";
        bench.deliver();
        ASSERT_EQ(bench.alerts.asked.size(), 1U);
        const platform::Alert& alert = bench.alerts.asked[0];
        EXPECT_EQ(alert.title, std::string(name) + " is protected");
        EXPECT_EQ(alert.text,
            "Rule 44: OSTREL never stops agents, Finder, Apple daemons or itself. The protection list is in "
            "settings.");
        EXPECT_EQ(alert.buttons, Lines { "OK" });
        EXPECT_TRUE(bench.children.requests.empty());
        EXPECT_TRUE(bench.maintenance.cleanupReport().empty());
    }
}

TEST(Workloads, AStopIsReportedHoweverItEndsAndTheSnapshotIsReadAgain)
{
    const std::tuple<const char*, std::size_t, const char*, std::size_t> cases[] {
        { allowed, 0, "stopped node pid 70 · 9 mb · receipt written", 1 },
        { allowed, 1, "cancelled · node pid 70 left running", 0 },
        { R"({"refused":[{"pid":70,"reason":"an agent"}]})", 0, "node is protected · an agent", 0 },
        { "", 0, "node is protected · not in the snapshot", 0 },
    };
    for (const auto& [answered, pressed, line, signalled] : cases) {
        WorkloadsBench bench;
        bench.alerts.answers = { pressed };
        bench.killAnswered("70", "node", answered);
        ASSERT_EQ(bench.maintenance.cleanupReport().size(), 1U) << line;
        EXPECT_EQ(bench.maintenance.cleanupReport().back(), bench.maintenance.nowStr() + " " + line);
        EXPECT_EQ(bench.signals.terminated.size(), signalled) << line;
        auto expected = Lines { "kill-preview", "json" };
        if (signalled > 0)
            expected.insert(expected.begin() + 1, "receipts");
        EXPECT_EQ(bench.ran(), expected) << line;
    }
}

TEST(Workloads, WhatIsNoWholeNumberIsNoProcess)
{
    for (const char* pid : { "", "x", "7x", " 7", "7.0", "99999999999999999999" }) {
        WorkloadsBench bench;
        bench.killAnswered(pid, "node", allowed);
        EXPECT_TRUE(bench.children.requests.empty()) << pid;
    }
}

TEST(Workloads, AChosenFilterIsDrawnAtOnceAndAButtonWithoutAKeyMeansTheFirst)
{
    WorkloadsBench bench;
    EXPECT_EQ(bench.workloads.processFilter(), "memory");
    for (const auto& [pressed, filter] : { std::pair("cpu", "cpu"), { "", "memory" } }) {
        bench.panel.calls.clear();
        bench.workloads.selectProcessFilter(pressed);
        EXPECT_EQ(bench.workloads.processFilter(), filter);
        EXPECT_EQ(bench.panel.calls, Lines { "render" });
    }
}

TEST(WorkloadsText, EachFilterShowsItsOwnTheLargestFirstAndAlikeOnesInTheCollectorsOrder)
{
    const ProtectionRules rules({ "claude", "codex", "finder" });
    const std::vector<Proc> procs {
        { .rss = 10, .pid = "1", .name = "node", .cmd = "node server", .cpu = 3 },
        { .rss = 90, .pid = "2", .name = "Finder", .cmd = "", .cpu = 0.5 },
        { .rss = 10, .pid = "3", .name = "sh", .cmd = "sh -c CODEX-runner", .cpu = 120 },
        { .rss = 50, .pid = "4", .name = "runner", .cmd = "/opt/claude", .cpu = 3 },
        { .rss = 70, .pid = "5", .name = "npx", .cmd = "npx my-MCP-server", .cpu = 0 },
    };
    for (const auto& [filter, expected] : { std::pair { "memory", "25413" }, { "cpu", "31425" },
             { "agents", "43" }, { "mcp", "5" }, { "stoppable", "513" }, { "no such key", "25413" } }) {
        std::string shown;
        for (const std::size_t at : filteredProcesses(procs, filter, rules))
            shown += procs[at].pid;
        EXPECT_EQ(shown, expected) << filter;
    }
}

TEST(WorkloadsText, ARowSaysWhatItIsAndWhetherItCanBeStopped)
{
    const Proc proc { .rss = 1536, .pid = "7", .name = "node", .grp = "runtime", .cmd = "node x", .cpu = 3 };
    const auto told = [](const ProcessRow& row) {
        return Lines { row.tag, row.tagTip, row.button, row.buttonTip, row.memory, row.tip, row.nameLabel };
    };
    EXPECT_EQ(told(processRow(proc, false)),
        (Lines { "RUNTIME", "can be stopped with a confirmation", "stop…",
            "Preview this exact process, then confirm a graceful stop", "1.5 gb", "node x",
            "node – node x" }));
    const ProcessRow kept = processRow(proc, true);
    EXPECT_EQ(told(kept),
        (Lines { "PROT", "protected: this app never stops node", "protected",
            "Agent and system processes stay protected", "1.5 gb", "node x", "node – node x" }));
    EXPECT_TRUE(kept.isProtected && !processRow(proc, false).isProtected);
    for (const char* cmd : { "", "node" }) {
        const ProcessRow bare = processRow({ .name = "node", .cmd = cmd }, false);
        EXPECT_EQ(bare.tip + "|" + bare.nameLabel, "node|") << cmd;
    }
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
    for (const auto& [isProtected, last] :
        { std::pair { false, "stop process=stop this process (SIGTERM, asks first)!" },
            { true, "why protected?=why is this process protected?!" } }) {
        Lines lines;
        for (const ProcessMenuLine& line : processMenu(proc, isProtected))
            lines.push_back(fmt::format("{}={}{}", line.title, line.shown, line.enabled ? "!" : ""));
        EXPECT_EQ(lines, (Lines { "process details=process · node", "=pid 7 · 100 mb rss", "=", last }));
    }
}

} // namespace
