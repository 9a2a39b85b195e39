// SPDX-License-Identifier: Apache-2.0
#include "panel/Workloads.h"

#include "support/FakeAlerts.h"
#include "support/FakePanel.h"
#include "support/FakeProcessSignals.h"
#include "support/FakeWorkspace.h"
#include "support/StateBench.h"

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

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
    [[nodiscard]] std::vector<std::string> ran()
    {
        std::vector<std::string> commands;
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
        EXPECT_EQ(alert.buttons, std::vector<std::string> { "OK" });
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
        auto expected = std::vector<std::string> { "kill-preview", "json" };
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
        EXPECT_EQ(bench.panel.calls, std::vector<std::string> { "render" });
    }
}

} // namespace
