// SPDX-License-Identifier: Apache-2.0
#include "collector/SnapshotCycle.h"

#include "support/FakeBundle.h"
#include "support/FakeChildProcess.h"
#include "support/FakeFileManager.h"
#include "support/FakeKernel.h"
#include "support/FakePanel.h"
#include "support/FakeUserDefaults.h"
#include "support/ManualGlobalQueue.h"
#include "support/VirtualTime.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace std::chrono_literals;
using namespace std::string_literals;
using platform::Seconds;
using Calls = std::vector<std::string>;

constexpr const char* good = R"({"ts":"now","ram":{},"swap":{}})";
constexpr const char* script = "/home/someone/Library/Application Support/Ostrel/runtime/ostrel.py";

/// A cycle with an open panel, whose children answer what the test prepared.
struct Bench {
    Bench() { cycle->connect(panel, panel); }

    void answer(
        const std::string& output, int status = 0, const std::string& errorOutput = {}, double elapsed = 0.1)
    {
        children.outcomes.push_back(
            { .output = output, .errorOutput = errorOutput, .status = status, .elapsed = Seconds(elapsed) });
    }
    /// Lets the child that is on its way end, and its answer arrive.
    void deliver()
    {
        queue.run();
        time.runPosted();
    }
    void fetch(
        const std::string& output, int status = 0, const std::string& errorOutput = {}, double elapsed = 0.1)
    {
        answer(output, status, errorOutput, elapsed);
        cycle->fetchPythonData();
        deliver();
    }
    Calls calls() { return std::exchange(panel.calls, {}); }

    FakeKernel kernel;
    CPUSampler sampler { kernel };
    VirtualTime time;
    FakeUserDefaults defaults;
    FakeFileManager files;
    FakeChildProcess children;
    FakeBundle bundle;
    ManualGlobalQueue queue;
    FakePanel panel;
    NativeTick tick { kernel, sampler, time, time, defaults };
    std::shared_ptr<CollectorRunner> runner = std::make_shared<CollectorRunner>(children);
    std::optional<SnapshotCycle> cycle { std::in_place,
        SnapshotCycle::Platform { time, time, queue, files, bundle, time }, runner, tick };
};

TEST(SnapshotCycle, AsksTheScriptOfTheProgramOrElseThatOfTheHome)
{
    Bench bench;
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
    EXPECT_EQ(bench.queue.waiting.at(0).first, platform::QueuePriority::utility);
    bench.deliver();
    ASSERT_EQ(bench.children.requests.size(), 2U);
    for (const auto& [at, path] : { std::pair { 0U, script }, { 1U, "/opt/collectors/ostrel.py" } }) {
        const auto& request = bench.children.requests[at];
        EXPECT_EQ(request.executable, "/usr/bin/python3");
        EXPECT_EQ(request.arguments, (Calls { path, "json" }));
        EXPECT_EQ(request.input, std::nullopt);
        EXPECT_EQ(request.timeout, Seconds(8));
    }
}

TEST(SnapshotCycle, DrawsTheWaitingStateBeforeTheFirstChildAndTheReadoutBehindTheBody)
{
    Bench bench;
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
    for (const auto& words : ostrelModes()) {
        const OstrelMode mode = words.mode;
        const bool drawn = mode != OstrelMode::server && mode != OstrelMode::settings;
        Bench bench;
        bench.fetch(good);
        bench.calls();
        bench.panel.tab = mode;
        bench.fetch(R"({"ts":"later","ram":{},"swap":{}})");
        EXPECT_EQ(bench.calls(), drawn ? (Calls { "forced", "readout" }) : (Calls { "readout" }))
            << words.title;
        EXPECT_EQ(bench.cycle->lastData()->ts, "later") << words.title;
        bench.fetch("", 1);
        EXPECT_EQ(bench.calls(), drawn ? Calls { "render" } : Calls {}) << words.title;
    }
}

TEST(SnapshotCycle, OnlyAnObjectWithRamAndSwapAndStatusZeroIsASnapshot)
{
    constexpr const char* invalid = "Collector returned invalid data";
    const std::string deep
        = R"({"ram":{},"swap":{},"x":)" + std::string(1'000, '[') + std::string(1'000, ']') + "}";
    struct Case {
        std::string output;
        int status;
        std::string errorOutput;
        double elapsed;
        std::string state;
    };
    const Case cases[] {
        { good, 0, "", 0.1234, "snapshot 123 ms" },
        { good, 0, "a warning", 7.9996, "snapshot 8000 ms" },
        { R"({"swap":{"a":1},"ram":{"b":2},"ts":7})", 0, "", 0, "snapshot 0 ms" },
        { "  "s + good + "\n", 0, "", 1, "snapshot 1000 ms" },
        { good, 1, "", 1, invalid },
        { good, 1, "KeyError: 'x'\n", 1, "KeyError: 'x'\n" },
        { good, 0, "", 8, "snapshot 8000 ms" }, // the status decides, not the clock
        { good, 15, "", 8.5, "Collector timed out after 8s" },
        { good, 2, "\xff", 1, "Collector stopped" },
        { "", 0, "", 1, invalid },
        { "", 0, "a warning", 1, invalid },
        { "[]", 0, "", 1, invalid },
        { "null", 0, "", 1, invalid },
        { R"({"ram":{}})", 0, "", 1, invalid },
        { R"({"swap":{}})", 0, "", 1, invalid },
        { R"({"ram":[],"swap":{}})", 0, "", 1, invalid },
        { R"({"ram":{},"swap":null})", 0, "", 1, invalid },
        { R"({"ram":{},"swap":{})", 0, "", 1, invalid },
        { "warning\n"s + good, 0, "", 1, invalid },
        { good + "{}"s, 0, "", 1, invalid },
        { good + "\0"s, 0, "", 1, invalid },
        { "{\"ram\":{},\"swap\":{},\"ts\":\"\xff\"}", 0, "", 1, invalid },
        { deep, 0, "", 1, invalid },
    };
    for (const Case& c : cases) {
        Bench bench;
        bench.fetch(R"({"ts":"before","ram":{},"swap":{}})");
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
        EXPECT_EQ(
            bench.cycle->lastSnapshotJSON(), accepted ? c.output : R"({"ts":"before","ram":{},"swap":{}})")
            << shown;
        EXPECT_EQ(bench.cycle->lastData()->ts == "before", !accepted) << shown;
        EXPECT_EQ(bench.cycle->lastSnapshotAt() == before, !accepted) << shown;
    }
}

TEST(SnapshotCycle, AChildThatCannotStartIsShownInTheRunnersWords)
{
    Bench bench;
    bench.children.outcomes.push_back({ .launchError = "No such file or directory" });
    bench.cycle->fetchPythonData();
    bench.deliver();
    EXPECT_EQ(bench.cycle->backendState(), "Could not start Python 3: No such file or directory");
    EXPECT_EQ(bench.cycle->lastData(), std::nullopt);
    EXPECT_TRUE(bench.cycle->snapshotIsStale());
    EXPECT_EQ(bench.cycle->snapshotAgeText(), std::nullopt);
}

TEST(SnapshotCycle, OneChildAtATimeAndNoneWhileOtherWorkRuns)
{
    Bench bench;
    bool busy = true;
    bench.cycle->setBusy([&busy] { return busy; });
    bench.cycle->startPanelPolling();
    EXPECT_TRUE(bench.queue.waiting.empty());
    EXPECT_EQ(bench.cycle->backendState(), "collector idle") << "a skipped fetch touches nothing";
    EXPECT_EQ(bench.calls(), Calls {});
    busy = false;
    for (int press = 0; press < 5; ++press)
        bench.cycle->fetchPythonData();
    bench.time.advance(100s); // ticks of the timer meanwhile
    EXPECT_EQ(bench.queue.waiting.size(), 1U);
    EXPECT_TRUE(bench.cycle->isFetchingPythonData());
    bench.answer(good);
    bench.deliver();
    EXPECT_TRUE(bench.queue.waiting.empty()) << "nothing has queued up";
    bench.time.advance(15s);
    EXPECT_EQ(bench.queue.waiting.size(), 1U);
}

TEST(SnapshotCycle, TheTimerFollowsTheProfileAndOnlyAnOpenPanelIsFetchedFor)
{
    for (const auto& [profile, period] : { std::pair { "fast", 8s }, { "normal", 15s }, { "calm", 30s } }) {
        Bench bench;
        bench.cycle->startPanelPolling();
        bench.deliver();
        bench.tick.applyRefresh(profile);
        bench.cycle->profileChanged();
        EXPECT_EQ(bench.queue.waiting.size(), 1U) << "at once";
        bench.deliver();
        EXPECT_EQ(bench.time.timers(), 1) << profile;
        bench.children.requests.clear();
        for (int i = 1; i <= 3; ++i) {
            bench.time.advance(period - 1ms);
            EXPECT_TRUE(bench.queue.waiting.empty()) << profile;
            bench.time.advance(1ms);
            EXPECT_EQ(bench.queue.waiting.size(), 1U) << profile;
            bench.deliver();
        }
        bench.cycle->panelDidClose();
        bench.panel.open = false;
        bench.cycle->profileChanged();
        EXPECT_EQ(bench.time.timers(), 0) << profile;
        bench.time.advance(1000s);
        EXPECT_TRUE(bench.queue.waiting.empty()) << profile;
        EXPECT_EQ(bench.children.requests.size(), 3U) << profile;
    }
}

TEST(SnapshotCycle, AClosingVoidsTheAnswerOnItsWayAndReopeningFetchesAtOnce)
{
    Bench bench;
    bench.fetch(good);
    bench.cycle->startPanelPolling();
    // The panel closes while the child runs.
    bench.children.whileRunning = [&] {
        bench.children.whileRunning = nullptr;
        bench.cycle->panelDidClose();
    };
    bench.answer(R"({"ts":"late","ram":{},"swap":{}})", 0, "", 3);
    bench.queue.run();
    EXPECT_EQ(*bench.children.stops, 1) << "the child was asked to end";
    EXPECT_EQ(bench.cycle->generation(), 1);
    EXPECT_FALSE(bench.cycle->isFetchingPythonData());

    // It opens again, and the newer fetch is on its way when the old answer arrives.
    bench.calls();
    bench.cycle->startPanelPolling();
    EXPECT_EQ(bench.queue.waiting.size(), 1U);
    bench.time.runPosted();
    EXPECT_TRUE(bench.cycle->isFetchingPythonData()) << "the flag is the newer one's";
    EXPECT_EQ(bench.cycle->lastData()->ts, "now");
    EXPECT_EQ(bench.cycle->collectorLatency(), 0.1);
    EXPECT_EQ(bench.calls(), Calls {});
    bench.answer(R"({"ts":"new","ram":{},"swap":{}})");
    bench.deliver();
    EXPECT_EQ(bench.cycle->lastData()->ts, "new");
    EXPECT_FALSE(bench.cycle->isFetchingPythonData());
}

TEST(SnapshotCycle, WhatIsShownGetsStaleByTheProfileOrAtOnceByAFailure)
{
    for (const auto& [profile, limit] : { std::pair { "fast", 30s }, { "normal", 30s }, { "calm", 60s } }) {
        Bench bench;
        bench.tick.applyRefresh(profile);
        EXPECT_FALSE(bench.cycle->snapshotIsStale()) << "nothing yet";
        bench.fetch(good);
        bench.time.jump(limit);
        EXPECT_FALSE(bench.cycle->snapshotIsStale()) << profile;
        bench.time.jump(1ms);
        EXPECT_TRUE(bench.cycle->snapshotIsStale()) << profile;
        bench.fetch(good);
        EXPECT_FALSE(bench.cycle->snapshotIsStale()) << profile;
        bench.time.jump(10s);
        bench.fetch("", 1);
        EXPECT_TRUE(bench.cycle->snapshotIsStale()) << profile;
        EXPECT_EQ(bench.cycle->snapshotAgeText(), "10s ago") << "of the last good one";
        bench.fetch(good);
        EXPECT_FALSE(bench.cycle->snapshotIsStale()) << profile;
    }
}

TEST(SnapshotCycle, TheAgeIsRoundedToSecondsAndThenCutToItsUnit)
{
    const std::pair<double, const char*> cases[] { { 0, "0s ago" }, { 0.49, "0s ago" }, { 0.5, "1s ago" },
        { 59.4, "59s ago" }, { 59.6, "1m ago" }, { 119.4, "1m ago" }, { 119.5, "2m ago" },
        { 3599.4, "59m ago" }, { 3599.5, "1h ago" }, { 7199, "1h ago" }, { 7200, "2h ago" },
        { 86'400 * 10, "240h ago" }, { -5, "0s ago" }, { -7200, "0s ago" } };
    for (const auto& [age, text] : cases) {
        Bench bench;
        EXPECT_EQ(bench.cycle->snapshotAgeText(), std::nullopt);
        bench.fetch(good);
        bench.time.jump(Seconds(age));
        EXPECT_EQ(bench.cycle->snapshotAgeText(), text) << age;
    }
}

TEST(SnapshotCycle, AnAnswerThatOutlivesItsOwnerIsDroppedAndTheRunnerLivesAsLongAsTheRun)
{
    Bench bench;
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
    EXPECT_TRUE(bench.queue.waiting.empty()) << "the timer went with it";
}

TEST(SnapshotCycle, WithoutAPanelItKeepsStateOnly)
{
    Bench bench;
    SnapshotCycle bare({ bench.time, bench.time, bench.queue, bench.files, bench.bundle, bench.time },
        bench.runner, bench.tick);
    bare.fetchPythonData();
    bench.answer(good);
    bench.deliver();
    EXPECT_EQ(bare.lastData()->ts, "now");
    bare.profileChanged();
    EXPECT_EQ(bench.time.timers(), 0);
}

} // namespace
