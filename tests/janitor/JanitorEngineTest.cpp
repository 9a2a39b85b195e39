// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorEngine.h"

#include "janitor/JanitorBench.h"

#include <cerrno>
#include <functional>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Lines = JanitorBench::Lines;

TEST(JanitorEngine, AsksTheScriptInExactWordsAndWaitsAsLongAsEachTakes)
{
    struct Case {
        std::function<void(JanitorEngine&)> ask;
        Lines words;
        double seconds;
        bool settings; ///< takes the user's protection list
    };
    const auto ignore = [](auto&&...) {};
    const Lines picked { "b c", "a" };
    const std::vector<std::int64_t> pids { 12, -3 };
    const Case cases[] {
        { [&](auto& engine) { engine.findings(ignore); }, { "findings" }, 40, true },
        { [&](auto& engine) { engine.preview("g", {}, ignore); }, { "preview", "--group=g" }, 40, false },
        { [&](auto& engine) { engine.preview("g", picked, ignore); },
            { "preview", "--group=g", "--select=b c,a" }, 40, false },
        { [&](auto& engine) { engine.clean("g", {}, ignore); }, { "clean", "--group=g", "--apply" }, 120,
            false },
        { [&](auto& engine) { engine.clean("g", { "a" }, ignore); },
            { "clean", "--group=g", "--apply", "--select=a" }, 120, false },
        { [&](auto& engine) { engine.cacheCandidates(ignore); }, { "caches" }, 40, false },
        { [&](auto& engine) { engine.killPreview(pids, ignore); }, { "kill-preview", "--pids=12,-3" }, 20,
            true },
        { [&](auto& engine) { engine.mcpPreview("deep", ignore); }, { "mcp-preview", "--depth=deep" }, 20,
            true },
        { [&](auto& engine) { engine.groups(ignore); }, { "groups" }, 15, false },
        { [&](auto& engine) { engine.receiptLines(12, ignore); }, { "receipts" }, 15, false },
    };
    const std::pair<std::function<void(ProtectionList&)>, Lines> changes[] {
        { [](auto&) {}, {} },
        { [](auto& list) { list.add("node"), list.add("two words"); }, { "--protected=node,two words" } },
        { [](auto& list) { list.remove("orca"), list.add("x"), list.remove("finder"); },
            { "--protected=x", "--unprotected=orca,finder" } },
    };
    for (const auto& [change, settings] : changes) {
        for (const Case& c : cases) {
            JanitorBench bench;
            change(bench.protection);
            bench.bundle.resources["collectors/ostrel_janitor.py"] = "/opt/j.py";
            c.ask(bench.engine);
            ASSERT_EQ(bench.globalQueue.waiting.size(), 1U) << "nothing runs within the press";
            EXPECT_EQ(bench.globalQueue.waiting.front().first, platform::QueuePriority::userInitiated);
            bench.deliver();
            Lines words = c.words;
            words.insert(words.begin(), "/opt/j.py");
            if (c.settings)
                words.insert(words.end(), settings.begin(), settings.end());
            const auto& request = bench.children.requests.at(0);
            EXPECT_EQ(request.executable, "/usr/bin/python3");
            EXPECT_EQ(request.arguments, words);
            EXPECT_EQ(request.timeout.count(), c.seconds) << c.words[0];
            EXPECT_FALSE(request.input);
        }
    }
}

TEST(JanitorEngine, TheScriptIsTheOneThatCameWithTheProgramOrElseTheUsersOwn)
{
    JanitorBench bench;
    const std::string installed
        = "/home/someone/Library/Application Support/Ostrel/runtime/ostrel_janitor.py";
    EXPECT_EQ(bench.engine.scriptPath(), "/home/someone/Documents/_code/_tools/ostrel/ostrel_janitor.py");
    bench.files.contents[installed] = "";
    EXPECT_EQ(bench.engine.scriptPath(), installed);
    bench.bundle.resources["collectors/ostrel_janitor.py"] = "/opt/j.py";
    EXPECT_EQ(bench.engine.scriptPath(), "/opt/j.py");
}

TEST(JanitorEngine, WithoutAReplyEachOperationSaysSoInItsWay)
{
    constexpr const char* nothing = "the janitor collector returned nothing";
    const std::pair<platform::ChildOutcome, std::string> cases[] {
        { { .status = 0 }, nothing },
        { { .output = "[{}]", .status = 0 }, nothing },
        { { .output = "{\"findings\":[", .status = 0 }, nothing },
        { { .output = R"({"removed":3,"allowed":[)", .errorOutput = "boom", .status = 1 }, "boom" },
        { { .launchError = "No such file or directory" },
            "Could not start Python 3: No such file or directory" },
    };
    for (const auto& one : cases) {
        JanitorBench bench;
        bench.children.outcomes.assign(7, one.first);
        const std::string& expected = one.second;
        int answers = 0;
        bench.engine.findings([&](const auto& findings, const std::string& error) {
            EXPECT_TRUE(findings.empty());
            EXPECT_EQ(error, expected);
            ++answers;
        });
        bench.engine.preview("g", {}, [&](const JanitorPreview& preview) {
            EXPECT_EQ(preview.group + preview.title + preview.error, "gg" + expected);
            EXPECT_EQ(preview.count, 0);
            ++answers;
        });
        bench.engine.clean("g", {}, [&](const JanitorCleanResult& result) {
            EXPECT_FALSE(result.answered());
            EXPECT_EQ(result.title, expected);
            EXPECT_EQ(result.removed, 0);
            ++answers;
        });
        const auto empty = [&](const auto& list) { answers += list.empty(); };
        bench.engine.cacheCandidates(empty);
        bench.engine.receiptLines(12, empty);
        bench.engine.killPreview(
            { 7 }, [&](const JanitorKillPreview& preview) { answers += preview.allowed.empty(); });
        bench.engine.groups([&](const JanitorGroups& groups) { answers += groups.names.empty(); });
        bench.deliver();
        EXPECT_EQ(answers, 7) << expected;
    }
}

TEST(JanitorEngine, AReplyCarriesItsFiguresAndTheFileOfItsReceipt)
{
    JanitorBench bench;
    // What was removed stays removed, however the script ended behind its answer.
    bench.children.outcomes.push_back(
        { .output = R"({"title":"T","removed":3,"freed_mb":4.5,"failed_count":2,"error":"e","receipt":"/x"})",
            .errorOutput = "late",
            .status = 1 });
    std::optional<JanitorCleanResult> got;
    bench.engine.clean("g", {}, [&](JanitorCleanResult result) { got = std::move(result); });
    bench.globalQueue.run();
    EXPECT_FALSE(got) << "only in a turn of the main thread";
    bench.time.runPosted();
    ASSERT_TRUE(got);
    EXPECT_EQ(got->title + got->error, "Te");
    EXPECT_EQ(got->removed + got->failedCount, 5);
    EXPECT_EQ(got->freedMB, 4.5);
    EXPECT_EQ(got->receipt, bench.engine.receipts().receiptsPathToday());
}

TEST(JanitorEngine, WhatItsOwnerNoLongerWaitsForRunsAndAnswersNothing)
{
    JanitorBench bench;
    auto engine = std::make_optional<JanitorEngine>(bench.parts, bench.protection);
    const auto unexpected = [](const JanitorGroups&) { ADD_FAILURE() << "nobody waits"; };
    engine->groups(unexpected);
    bench.globalQueue.run();
    engine->groups(unexpected);
    engine.reset();
    bench.deliver();
    EXPECT_EQ(bench.children.requests.size(), 1U) << "the second never began";
}

struct StopCase {
    const char* what;
    JanitorProcess process;
    int failure;
    std::string text;
    std::string result; ///< of the receipt; empty: no receipt
};

JanitorProcess serverOf(std::int64_t pid, std::int64_t start)
{
    return { .pid = pid, .name = "srv", .rssMB = 12, .cmd = "node srv", .reason = "", .start = start };
}

TEST(JanitorEngine, TheOneSignalGoesToTheVeryProcessThatWasListedAndLeavesItsReceipt)
{
    JanitorProcess agent = serverOf(70, 5);
    agent.cmd = "/opt/bin/Claude --resume";
    const std::string notStopped = "could not stop srv pid ";
    const StopCase cases[] {
        { "running", serverOf(70, 5), 0, "stopped srv pid 70 · 12 mb · receipt written", "sent" },
        { "protected", agent, 0, "protected · srv was not stopped", "" },
        { "gone", serverOf(71, 5), 0, notStopped + "71 · errno 3", "failed errno 3" },
        { "another by now", serverOf(70, 6), 0, notStopped + "70 · errno 3", "failed errno 3" },
        { "not ours", serverOf(70, 5), EPERM, notStopped + "70 · errno 1", "failed errno 1" },
        { "zero", serverOf(0, 5), 0, notStopped + "0 · errno 22", "" },
        { "everybody", serverOf(-1, 5), 0, notStopped + "-1 · errno 22", "" },
        { "the first", serverOf(1, 5), 0, notStopped + "1 · errno 22", "" },
        { "oversized", serverOf(2147483648, 5), 0, notStopped + "2147483648 · errno 22", "" },
        { "wraps to 70", serverOf(4294967366, 5), 0, notStopped + "4294967366 · errno 22", "" },
        { "no start", serverOf(70, 0), 0, notStopped + "70 · errno 22", "" },
    };
    for (const StopCase& c : cases) {
        JanitorBench bench;
        bench.processSignals.running[70] = 5;
        if (c.failure)
            bench.processSignals.errors[70] = c.failure;
        EXPECT_EQ(bench.engine.stop(bench.engine.hold({ c.process }).at(0)), c.text) << c.what;
        EXPECT_EQ(bench.processSignals.terminated.size(), c.result == "sent" ? 1U : 0U) << c.what;
        const auto receipts = bench.receipts();
        ASSERT_EQ(receipts.size(), c.result.empty() ? 0U : 1U) << c.what;
        if (!c.result.empty()) {
            json::Value receipt = receipts[0];
            const std::string path = bench.engine.receipts().receiptsPathToday();
            EXPECT_EQ(receipt["ts"], path.substr(path.size() - 16, 10) + " " + bench.clock());
            receipt.erase("ts");
            EXPECT_EQ(receipt,
                (json::Value { { "kind", "stop" }, { "pid", c.process.pid }, { "name", "srv" },
                    { "rss_mb", 12 }, { "command", "node srv" }, { "signal", "SIGTERM" },
                    { "result", c.result } }));
        }
    }
    JanitorBench bench;
    EXPECT_EQ(bench.engine.stop({ serverOf(70, 5), {} }), notStopped + "70 · errno 22")
        << "what was never held is never signalled";
}

TEST(JanitorEngine, ANumberThatIsUsedAgainBetweenTheListAndTheAnswerIsLeftAlone)
{
    JanitorBench bench;
    bench.processSignals.running[70] = 5;
    const auto targets = bench.engine.hold({ serverOf(70, 5) });
    bench.processSignals.running[70] = 6;
    EXPECT_EQ(bench.engine.stop(targets.at(0)), "could not stop srv pid 70 · errno 3");
    EXPECT_TRUE(bench.processSignals.terminated.empty());
}

TEST(JanitorEngine, HoldsEachProcessOnceAndNoMoreThanItMay)
{
    JanitorBench bench;
    std::vector<JanitorProcess> many;
    for (int round = 0; round < 2; ++round)
        for (std::int64_t pid = 100; pid < 500; ++pid) {
            many.push_back(serverOf(pid, 5));
            bench.processSignals.running[pid] = 5;
        }
    const auto targets = bench.engine.hold(many);
    EXPECT_EQ(targets.size(), 400U);
    EXPECT_EQ(bench.processSignals.held.size(), JanitorEngine::mostHeld);
    EXPECT_EQ(bench.engine.stop(targets.back()), "could not stop srv pid 499 · errno 24");
}

TEST(JanitorEngine, AReceiptKeepsTheBeginningOfALongCommandAndItsFailureStopsNothing)
{
    JanitorBench bench;
    bench.processSignals.running[70] = 5;
    JanitorProcess process = serverOf(70, 5);
    process.cmd.clear();
    for (int sign = 0; sign < 1000; ++sign)
        process.cmd += "ä";
    EXPECT_TRUE(bench.engine.stop(bench.engine.hold({ process }).at(0)).starts_with("stopped"));
    EXPECT_EQ(bench.receipts().at(0)["command"], process.cmd.substr(0, 600));
    bench.files.full = true;
    EXPECT_EQ(bench.engine.stop(bench.engine.hold({ process }).at(0)),
        "stopped srv pid 70 · 12 mb · receipt written");
    EXPECT_EQ(bench.engine.receipts().writeReceipt({ { "ts", "then" } }), "");
    EXPECT_EQ(bench.receipts().size(), 1U);
    bench.files.full = false;
    EXPECT_EQ(bench.engine.receipts().writeReceipt({ { "ts", "then" }, { "broken", "\xff" } }),
        bench.engine.receipts().receiptsPathToday());
    EXPECT_EQ(bench.receipts().at(1)["broken"], "\ufffd");
    EXPECT_NE(bench.receipts().at(1)["ts"], "then");
}

} // namespace
