// SPDX-License-Identifier: Apache-2.0
#include "collector/SnapshotCycle.h"

#include "collector/CollectorBench.h"

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace std::chrono_literals;
using namespace std::string_literals;
using platform::Seconds;
using Calls = std::vector<std::string>;

constexpr const char* good = R"({"ts":"now","ram":{},"swap":{}})";
constexpr const char* script = "/home/someone/Library/Application Support/Ostrel/runtime/ostrel.py";

/// A snapshot that says when it was taken.
std::string taken(const std::string& when) { return R"({"ts":")" + when + R"(","ram":{},"swap":{}})"; }

TEST(SnapshotCycle, AsksTheScriptOfTheProgramOrElseThatOfTheHome)
{
    CollectorBench bench;
    EXPECT_EQ(bench.cycle->backendState(), "collector idle");
    EXPECT_EQ(bench.cycle->backendLastSource(), "native");
    bench.cycle->ensureCollectorAvailable();
    EXPECT_EQ(bench.cycle->backendState(), "collector missing: "s + script);
    bench.files.contents[script] = "";
    bench.cycle->ensureCollectorAvailable();
    EXPECT_EQ(bench.cycle->backendState(), "on-demand CLI · no server");
    bench.fetch(good);
    bench.bundle.resources["collectors/ostrel.py"] = "/opt/collectors/ostrel.py";
    bench.cycle->fetchPythonData();
    EXPECT_EQ(bench.cycle->backendState(), "collector missing: /opt/collectors/ostrel.py")
        << "looked at each time";
    EXPECT_EQ(bench.globalQueue.waiting.at(0).first, platform::QueuePriority::utility);
    bench.deliver();
    ASSERT_EQ(bench.children.requests.size(), 2U);
    EXPECT_EQ(bench.children.requests[0].arguments, (Calls { script, "json" }));
    EXPECT_EQ(bench.children.requests[1].arguments, (Calls { "/opt/collectors/ostrel.py", "json" }));
}

TEST(SnapshotCycle, DrawsTheWaitingStateBeforeTheFirstChildAndTheReadoutBehindTheBody)
{
    CollectorBench bench;
    bench.children.whileRunning = [&] { bench.panel.calls.emplace_back("child"); };
    bench.fetch("", 1);
    EXPECT_EQ(bench.calls(), (Calls { "render", "child", "render" })) << "a failure draws no readout";
    bench.fetch(good);
    EXPECT_EQ(bench.calls(), (Calls { "render", "child", "forced", "readout" }));
    bench.fetch(good);
    EXPECT_EQ(bench.calls(), (Calls { "child", "forced", "readout" })) << "the old numbers stay meanwhile";
    bench.fetch("", 1);
    EXPECT_EQ(bench.calls(), (Calls { "child", "render" }));
}

TEST(SnapshotCycle, TheServerAndSettingsTabsAreNotRebuilt)
{
    CollectorBench bench;
    bench.fetch(good);
    for (const auto& words : ostrelModes()) {
        const bool drawn = words.mode != OstrelMode::server && words.mode != OstrelMode::settings;
        const std::string title(words.title);
        bench.panel.tab = words.mode;
        bench.calls();
        bench.fetch(taken(title));
        EXPECT_EQ(bench.calls(), drawn ? (Calls { "forced", "readout" }) : Calls { "readout" }) << title;
        EXPECT_EQ(bench.cycle->lastData()->ts, title);
        bench.fetch("", 1);
        EXPECT_EQ(bench.calls(), drawn ? Calls { "render" } : Calls {}) << title;
    }
}

TEST(SnapshotCycle, OnlyAnObjectWithRamAndSwapAndStatusZeroIsASnapshot)
{
    constexpr const char* invalid = "Collector returned invalid data";
    const std::string deep
        = R"({"ram":{},"swap":{},"x":)" + std::string(1'000, '[') + std::string(1'000, ']') + "}";
    struct Case {
        std::string output;
        std::string state = invalid;
        int status = 0;
        std::string errorOutput;
        double elapsed = 1;
    };
    const Case cases[] { { good, "snapshot 123 ms", 0, "", 0.1234 },
        { good, "snapshot 8000 ms", 0, "a warning", 7.9996 },
        { R"({"swap":{"a":1},"ram":{"b":2},"ts":7})", "snapshot 0 ms", 0, "", 0 },
        { "  "s + good + "\n", "snapshot 1000 ms" }, { good, invalid, 1 },
        { good, "KeyError: 'x'\n", 1, "KeyError: 'x'\n" },
        { good, "snapshot 8000 ms", 0, "", 8 }, // the status decides, not the clock
        { good, "Collector timed out after 8s", 15, "", 8.5 }, { "", invalid, 0, "a warning" }, { "[]" },
        { "null" }, { R"({"ram":{}})" }, { R"({"swap":{}})" }, { R"({"ram":[],"swap":{}})" },
        { R"({"ram":{},"swap":null})" }, { R"({"ram":{},"swap":{})" }, { "warning\n"s + good },
        { good + "{}"s }, { good + "\0"s }, { "{\"ram\":{},\"swap\":{},\"ts\":\"\xff\"}" }, { deep } };
    for (const Case& c : cases) {
        CollectorBench bench;
        bench.fetch(taken("before"));
        const auto before = bench.cycle->lastSnapshotAt();
        bench.time.advance(5s);
        bench.fetch(c.output, c.status, c.errorOutput, c.elapsed);
        const std::string shown = c.output.substr(0, 60);
        const bool accepted = c.state.starts_with("snapshot ");
        EXPECT_EQ(bench.cycle->backendState(), c.state) << shown;
        EXPECT_EQ(bench.cycle->backendLastSource(), accepted ? "local CLI" : "error") << shown;
        EXPECT_EQ(bench.cycle->collectorLatency(), c.elapsed) << shown;
        EXPECT_EQ(bench.cycle->snapshotIsStale(), !accepted) << shown;
        EXPECT_FALSE(bench.cycle->isFetchingPythonData()) << shown;
        EXPECT_EQ(bench.cycle->lastSnapshotJSON(), accepted ? c.output : taken("before")) << shown;
        EXPECT_EQ(bench.cycle->lastData()->ts == "before", !accepted) << shown;
        EXPECT_EQ(bench.cycle->lastSnapshotAt() == before, !accepted) << shown;
    }
}

TEST(SnapshotCycle, AFirstChildThatCannotStartLeavesNoDataAndIsShownInTheRunnersWords)
{
    CollectorBench bench;
    bench.children.outcomes.push_back({ .launchError = "No such file or directory" });
    bench.cycle->fetchPythonData();
    bench.deliver();
    EXPECT_EQ(bench.cycle->backendState(), "Could not start Python 3: No such file or directory");
    EXPECT_EQ(bench.cycle->lastData(), std::nullopt);
    EXPECT_EQ(bench.cycle->snapshotAgeText(), std::nullopt);
    EXPECT_TRUE(bench.cycle->snapshotIsStale());
}

TEST(SnapshotCycle, OneChildAtATimeAndNoneWhileOtherWorkRuns)
{
    CollectorBench bench;
    bool busy = true;
    bench.cycle->setBusy([&busy] { return busy; });
    bench.cycle->startPanelPolling();
    EXPECT_EQ(bench.waiting(), 0U);
    EXPECT_EQ(bench.cycle->backendState(), "collector idle") << "a skipped fetch touches nothing";
    EXPECT_EQ(bench.calls(), Calls {});
    busy = false;
    for (int press = 0; press < 5; ++press)
        bench.cycle->fetchPythonData();
    bench.time.advance(100s); // ticks of the timer meanwhile
    EXPECT_EQ(bench.waiting(), 1U);
    EXPECT_TRUE(bench.cycle->isFetchingPythonData());
    bench.answer(good);
    bench.deliver();
    EXPECT_EQ(bench.waiting(), 0U) << "nothing has queued up";
    bench.time.advance(15s);
    EXPECT_EQ(bench.waiting(), 1U);
}

TEST(SnapshotCycle, TheTimerFollowsTheProfileAndOnlyAnOpenPanelIsFetchedFor)
{
    for (const auto& [profile, period] : { std::pair { "fast", 8s }, { "normal", 15s }, { "calm", 30s } }) {
        CollectorBench bench;
        bench.cycle->startPanelPolling();
        bench.deliver();
        bench.tick.applyRefresh(profile);
        bench.cycle->profileChanged();
        EXPECT_EQ(bench.waiting(), 1U) << "at once";
        bench.deliver();
        EXPECT_EQ(bench.time.timers(), 1) << profile;
        bench.time.advance(period - 1ms);
        EXPECT_EQ(bench.waiting(), 0U) << profile;
        bench.time.advance(1ms);
        EXPECT_EQ(bench.waiting(), 1U) << profile;
        bench.deliver();
        bench.cycle->panelDidClose();
        bench.panel.open = false;
        bench.cycle->profileChanged();
        EXPECT_EQ(bench.time.timers(), 0) << profile;
        bench.time.advance(1000s);
        EXPECT_EQ(bench.waiting(), 0U) << profile;
    }
}

TEST(SnapshotCycle, AClosingVoidsTheAnswerOnItsWayAndReopeningFetchesAtOnce)
{
    CollectorBench bench;
    bench.fetch(good);
    bench.cycle->startPanelPolling();
    // The panel closes while the child runs.
    bench.children.whileRunning = [&] {
        bench.children.whileRunning = nullptr;
        bench.cycle->panelDidClose();
    };
    bench.answer(taken("late"), 0, "", 3);
    bench.globalQueue.run();
    EXPECT_EQ(*bench.children.stops, 1) << "the child was asked to end";
    EXPECT_EQ(bench.cycle->generation(), 1);
    EXPECT_FALSE(bench.cycle->isFetchingPythonData());

    // It opens again, and the newer fetch is on its way when the old answer arrives.
    bench.calls();
    bench.cycle->startPanelPolling();
    EXPECT_EQ(bench.waiting(), 1U);
    bench.time.runPosted();
    EXPECT_TRUE(bench.cycle->isFetchingPythonData()) << "the flag is the newer one's";
    EXPECT_EQ(bench.cycle->lastData()->ts, "now");
    EXPECT_EQ(bench.cycle->collectorLatency(), 0.1);
    EXPECT_EQ(bench.calls(), Calls {});
    bench.answer(taken("new"));
    bench.deliver();
    EXPECT_EQ(bench.cycle->lastData()->ts, "new");
    EXPECT_FALSE(bench.cycle->isFetchingPythonData());
}

TEST(SnapshotCycle, WhatIsShownGetsStaleByTheProfileOrAtOnceByAFailure)
{
    for (const auto& [profile, limit] : { std::pair { "fast", 30s }, { "normal", 30s }, { "calm", 60s } }) {
        CollectorBench bench;
        bench.tick.applyRefresh(profile);
        EXPECT_FALSE(bench.cycle->snapshotIsStale()) << "nothing yet";
        bench.fetch(good);
        bench.time.jump(limit);
        EXPECT_FALSE(bench.cycle->snapshotIsStale()) << profile;
        bench.time.jump(1ms);
        EXPECT_TRUE(bench.cycle->snapshotIsStale()) << profile;
        bench.fetch(good);
        bench.time.jump(10s);
        EXPECT_FALSE(bench.cycle->snapshotIsStale()) << profile;
        bench.fetch("", 1);
        EXPECT_TRUE(bench.cycle->snapshotIsStale()) << profile;
        EXPECT_EQ(bench.cycle->snapshotAgeText(), "10s ago") << "of the last good one";
    }
}

TEST(SnapshotCycle, TheAgeIsRoundedToSecondsAndThenCutToItsUnit)
{
    const std::pair<double, const char*> cases[] { { 0, "0s ago" }, { 0.49, "0s ago" }, { 0.5, "1s ago" },
        { 59.4, "59s ago" }, { 59.6, "1m ago" }, { 119.4, "1m ago" }, { 119.5, "2m ago" },
        { 3599.4, "59m ago" }, { 3599.5, "1h ago" }, { 7199, "1h ago" }, { 7200, "2h ago" },
        { 86'400 * 10, "240h ago" }, { -5, "0s ago" }, { -7200, "0s ago" } };
    for (const auto& [age, text] : cases) {
        CollectorBench bench;
        bench.fetch(good);
        bench.time.jump(Seconds(age));
        EXPECT_EQ(bench.cycle->snapshotAgeText(), text) << age;
    }
}

TEST(SnapshotCycle, AnAnswerThatOutlivesItsOwnerIsDroppedAndTheRunnerLivesAsLongAsTheRun)
{
    CollectorBench bench;
    bench.cycle->startPanelPolling();
    const std::weak_ptr<CollectorRunner> runner = bench.runner;
    bench.runner.reset();
    bench.children.whileRunning = [&] {
        bench.cycle.reset();
        EXPECT_FALSE(runner.expired()) << "it is in use";
    };
    bench.answer(good);
    bench.calls();
    bench.deliver();
    EXPECT_EQ(bench.calls(), Calls {});
    EXPECT_TRUE(runner.expired());
    bench.time.advance(100s);
    EXPECT_EQ(bench.waiting(), 0U) << "the timer went with it";
}

} // namespace
