// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsTab.h"

#include "automations/AutomationsBench.h"

#include <functional>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Lines = AutomationsBench::Lines;

const std::string oneJob = inventoryJson({ jobJson("launchd", "user:x.timer") });

struct OpenBench : AutomationsBench {
    OpenBench() { open(oneJob); }

    /// A press that asks the bridge, which answers this, to its end.
    void refresh(const std::string& output, int status = 0)
    {
        answer(output, status);
        tab->refresh();
        settle();
    }
};

TEST(AutomationsTab, WhatIsDrawnFirstStartsTheOnlyLoadThatNobodyAskedFor)
{
    const std::initializer_list<std::pair<OstrelMode, std::function<void(AutomationsTab&)>>> drawings {
        { OstrelMode::automations, [](AutomationsTab& tab) { (void)tab.body(); } },
        { OstrelMode::overview, [](AutomationsTab& tab) { (void)tab.agentOverview(); } },
        { OstrelMode::sessions, [](AutomationsTab& tab) { (void)tab.agentOverview(); } },
    };
    for (const auto& [mode, draw] : drawings) {
        AutomationsBench bench;
        bench.panel.tab = mode;
        (void)bench.tab->settingsSection();
        EXPECT_FALSE(bench.tab->registry().busy());
        bench.answer(oneJob);
        draw(*bench.tab);
        EXPECT_TRUE(bench.tab->registry().busy());
        EXPECT_EQ(bench.tab->body().title, "rebuilding the inventory…");
        bench.settle();
        EXPECT_EQ(bench.children.requests.at(0).timeout, platform::Seconds(30));
        EXPECT_EQ(bench.runs(), Lines { "list" });
        EXPECT_EQ(bench.drawn(), 1U);
        draw(*bench.tab);
        (void)bench.tab->agentOverview();
        bench.settle();
        EXPECT_EQ(bench.runs(), Lines {});
        EXPECT_EQ(bench.tab->body().rows.size(), 1U);
    }
}

TEST(AutomationsTab, EachCommandHasItsArgumentsItsLimitAndThePersonsPriority)
{
    AutomationsBench bench;
    const std::string odd = inventoryJson({ jobJson("launchd", "-rf:\n--confirm", { { "target", "" } }) });
    bench.open(odd);
    bench.alerts.answers = { 0 };
    bench.answer(R"({"journal":[]})");
    bench.answer(R"({"ok":true})");
    bench.tab->toggleRow(bench.item());
    EXPECT_EQ(bench.globalQueue.waiting.front().first, platform::QueuePriority::userInitiated);
    bench.tab->confirm("run", bench.item());
    bench.answer(odd);
    bench.settle();
    std::vector<std::pair<Lines, double>> runs;
    for (const auto& request : bench.children.requests) {
        EXPECT_EQ(request.executable, "/usr/bin/python3");
        EXPECT_FALSE(request.input);
        runs.emplace_back(request.arguments, request.timeout.count());
    }
    const std::string script = "/opt/bridge.py";
    const std::vector<std::pair<Lines, double>> expected {
        { { script, "journal", "--lane", "launchd", "--id", "-rf:\n--confirm", "--target", "" }, 60 },
        { { script, "act", "--lane", "launchd", "--id", "-rf:\n--confirm", "--op", "run", "--confirm" },
            130 },
        { { script, "list", "--refresh" }, 330 },
    };
    EXPECT_EQ(runs, expected);
    bench.bundle.resources.clear();
    EXPECT_EQ(bench.tab->registry().bridgePath(), "../automations_bridge.py");
}

TEST(AutomationsTab, AReadThatFailsEmptiesWhatWasShown)
{
    const std::initializer_list<std::pair<int, std::string>> failures { { 1, oneJob }, { 15, "" }, { 0, "" },
        { 0, "[]" }, { 0, "{\"ok\":true" }, { 0, std::string(100 << 20, ' ') } };
    for (const auto& [status, output] : failures) {
        OpenBench bench;
        bench.refresh(output, status);
        const AutomationsBody body = bench.tab->body();
        EXPECT_EQ(body.error, "inventory: inventory unavailable") << status << output.size();
        EXPECT_TRUE(body.rows.empty());
        EXPECT_EQ(body.title, "0 entries · 0 enabled");
        EXPECT_FALSE(bench.tab->registry().busy());
    }
}

TEST(AutomationsTab, ARefreshSaysSoUntilItEndsAndASecondPressIsDropped)
{
    OpenBench bench;
    bench.answer(oneJob);
    bench.tab->refresh();
    EXPECT_EQ(bench.drawn(), 1U);
    EXPECT_EQ(bench.lastAction(), "rebuilding the inventory, up to a few minutes");
    EXPECT_FALSE(bench.tab->body().refresh.enabled);
    bench.tab->refresh();
    EXPECT_EQ(bench.drawn(), 0U);
    bench.settle();
    EXPECT_EQ(bench.runs(), Lines { "list|--refresh" });
    EXPECT_EQ(bench.lastAction(), "");
    EXPECT_EQ(bench.drawn(), 1U);
}

TEST(AutomationsTab, AFilterStartsAtTheFirstPageAndALaneKeepsIt)
{
    std::vector<json::Value> rows;
    rows.reserve(40);
    for (int at = 0; at < 40; ++at)
        rows.push_back(jobJson(at < 30 ? "a" : "b", std::to_string(at)));
    AutomationsBench bench;
    bench.open(inventoryJson(rows));
    const auto page = [&] { return bench.tab->body().pageLabel; };
    bench.tab->previousPage();
    for (int press = 0; press < 9; ++press) {
        bench.tab->nextPage();
        (void)page();
    }
    EXPECT_EQ(page(), "40 matches · page 4/4");
    bench.tab->previousPage();
    bench.tab->chooseLane("a");
    EXPECT_EQ(page(), "30 matches · page 3/3");
    bench.tab->chooseLane("b");
    EXPECT_EQ(page(), "10 matches · page 1/1");
    bench.tab->chooseLane("");
    bench.tab->nextPage();
    bench.tab->chooseState(AutomationStateFilter::enabled);
    EXPECT_EQ(page(), "40 matches · page 1/4");
    bench.tab->nextPage();
    bench.tab->search("job 3");
    EXPECT_EQ(page(), "11 matches · page 1/1");
    EXPECT_EQ(bench.tab->body().query, "job 3");
}

TEST(AutomationsTab, AJournalIsReadOnceAndFillsTheRowThatIsThereByThen)
{
    OpenBench bench;
    const Automation item = bench.item();
    bench.answer(R"({"last_run":"2026-11-25T09:00:00Z","last_result":"failed","journal":[{"line":"boom"}]})");
    bench.tab->toggleRow(item);
    bench.tab->toggleRow(item); // shut
    bench.tab->toggleRow(item);
    EXPECT_EQ(bench.tab->body().rows[0].card->runs, Lines { "no run details returned yet" });
    bench.settle();
    EXPECT_EQ(bench.runs(), Lines { "journal|--lane|launchd|--id|user:x.timer|--target|t=user:x.timer" });
    EXPECT_EQ(bench.tab->body().rows[0].card->runs, Lines { "boom" });
    EXPECT_TRUE(bench.tab->body().rows[0].failed);
    // An inventory neither clears nor refreshes it.
    bench.refresh(oneJob);
    EXPECT_EQ(bench.tab->body().rows[0].card->runs, Lines { "boom" });
    EXPECT_FALSE(bench.tab->body().rows[0].failed);
}

TEST(AutomationsTab, AJournalThatFailsIsNotReadAgainAndThatOfAVanishedRowIsKeptForIt)
{
    OpenBench bench;
    const Automation item = bench.item();
    bench.answer("", 1);
    bench.tab->toggleRow(item);
    bench.settle();
    bench.tab->toggleRow(item);
    bench.tab->toggleRow(item);
    bench.settle();
    EXPECT_EQ(bench.runs().size(), 1U);
    EXPECT_EQ(bench.item(), item);

    OpenBench gone;
    gone.answer(inventoryJson({ jobJson("cloud", "other") }));
    gone.tab->refresh();
    gone.answer(R"({"last_result":"late","journal":[{"line":"late"}]})");
    gone.tab->toggleRow(item);
    gone.settle();
    EXPECT_EQ(gone.item().lastResult, "");
    EXPECT_EQ(gone.tab->registry().journals().at(item.key()).size(), 1U);
}

TEST(AutomationsTab, AnActionAsksSaysThatItRunsAndShowsItsEndWithTheNewInventory)
{
    struct Case {
        const char *op, *reply;
        int status;
        const char *said, *read;
        double seconds = 0.1;
    };
    for (const auto& [op, reply, status, said, read, seconds] : std::initializer_list<Case> {
             { "run", R"({"ok":true,"message":"started","receipt":"/r/day.jsonl"})", 0,
                 "✓ started · receipt day.jsonl", "list|--refresh" },
             { "disable", R"({"ok":true})", 0, "✓ disable · Job user:x.timer", "list|--refresh" },
             { "enable", R"({"ok":false,"error":"blocked"})", 0, "✗ blocked", "list|--refresh" },
             { "plan", R"({"ok":true,"message":"saved"})", 0, "✓ saved", "list" },
             { "run", R"({"ok":false,"error":"its own"})", 1, "✗ the bridge did not answer",
                 "list|--refresh" },
             { "run", R"({"ok":true})", 0, "✗ the bridge did not answer", "list|--refresh", 130 },
         }) {
        OpenBench bench;
        bench.tab->toggleRow(bench.item());
        bench.settle();
        bench.forget();
        bench.alerts.answers = { 0 };
        bench.tab->confirm(op, bench.item());
        EXPECT_TRUE(bench.alerts.asked.empty()) << "asked on the stack of the control's handler";
        bench.time.runPosted();
        EXPECT_EQ(bench.lastAction(), std::string(op) + " · Job user:x.timer · running");
        EXPECT_EQ(bench.drawn(), 1U);
        bench.answer(reply, status, "", seconds);
        bench.answer(oneJob);
        bench.deliver();
        EXPECT_EQ(bench.lastAction(), said);
        EXPECT_EQ(bench.drawn(), 0U) << "drawn before the inventory that shows it";
        EXPECT_FALSE(bench.tab->registry().journals().contains("launchd:user:x.timer"));
        bench.settle();
        EXPECT_EQ(bench.drawn(), 1U);
        EXPECT_EQ(bench.runs().at(1), read);
        EXPECT_EQ(bench.lastAction(), said);
    }
}

TEST(AutomationsTab, NothingIsDoneWithoutTheFirstButton)
{
    OpenBench bench;
    for (const std::size_t answer : { 1U, 2U }) {
        bench.alerts.answers = { answer };
        bench.tab->confirm("run", bench.item());
        bench.settle();
        EXPECT_EQ(bench.lastAction(), "cancelled · Job user:x.timer");
        EXPECT_EQ(bench.drawn(), 1U);
    }
    EXPECT_EQ(bench.runs(), Lines {});
}

TEST(AutomationsTab, APressWhileBusyOrBesideAQuestionAsksNothing)
{
    OpenBench bench;
    const Automation item = bench.item();
    bench.alerts.meanwhile = [&] {
        bench.tab->confirm("disable", item);
        bench.time.runPosted();
    };
    bench.tab->confirm("run", item);
    bench.tab->confirm("enable", item);
    bench.settle();
    ASSERT_EQ(bench.alerts.asked.size(), 1U);
    EXPECT_EQ(bench.alerts.asked[0].buttons[0], "run");
    bench.alerts.meanwhile = {};
    bench.tab->refresh();
    bench.tab->confirm("run", item);
    bench.settle();
    EXPECT_EQ(bench.alerts.asked.size(), 1U);
    // Busy between the press and the question.
    bench.tab->confirm("run", item);
    bench.tab->refresh();
    bench.settle();
    EXPECT_EQ(bench.alerts.asked.size(), 1U);
    bench.tab->confirm("run", item);
    bench.settle();
    EXPECT_EQ(bench.alerts.asked.size(), 2U);
}

TEST(AutomationsTab, OnlyTabsThatShowTheInventoryAreDrawnAnew)
{
    for (const OstrelModeWords& words : ostrelModes()) {
        OpenBench bench;
        bench.panel.tab = words.mode;
        bench.tab->refresh();
        bench.settle();
        const bool shows = words.mode == OstrelMode::automations || words.mode == OstrelMode::overview
            || words.mode == OstrelMode::sessions;
        EXPECT_EQ(bench.drawn(), shows ? 2U : 0U) << words.title;
    }
}

TEST(AutomationsTab, WhatIsOnItsWayEndsSilentlyWhenTheTabGoes)
{
    for (const bool beforeTheRun : { true, false }) {
        OpenBench bench;
        bench.tab->refresh();
        bench.tab->toggleRow(bench.item());
        bench.tab->confirm("run", bench.item());
        bench.forget();
        if (!beforeTheRun)
            bench.globalQueue.run();
        bench.tab.reset();
        bench.settle();
        EXPECT_EQ(bench.drawn(), 0U);
        EXPECT_EQ(bench.runs().size(), beforeTheRun ? 0U : 2U);
        EXPECT_TRUE(bench.alerts.asked.empty());
    }
}

TEST(AutomationsTab, TheReceiptsOpenAsAnAddressOfTheirFolder)
{
    AutomationsBench bench;
    bench.tab->openReceipts();
    const Lines expected { "file:///home/someone/Library/Application%20Support/Ostrel/receipts" };
    EXPECT_EQ(bench.workspace.opened, expected);
}

TEST(AutomationsTab, TheMadeUpInventoryAnswersInASelfTestThatAsksForItAndNowhereElse)
{
    for (const auto& [selfTest, fixture, madeUp] :
        std::initializer_list<std::tuple<bool, const char*, bool>> { { true, "1", true },
            { true, "0", false }, { true, nullptr, false }, { true, "11", false }, { false, "1", false } }) {
        AutomationsBench bench;
        bench.tab->setSelfTest(selfTest);
        if (fixture)
            bench.children.surroundings["OSTREL_PUBLIC_FIXTURE"] = fixture;
        bench.open(oneJob);
        bench.tab->refresh();
        bench.settle();
        EXPECT_EQ(bench.runs().size(), madeUp ? 0U : 1U);
        if (!madeUp)
            continue;
        EXPECT_EQ(bench.tab->body().title, "3 entries · 1 enabled");
        EXPECT_EQ(bench.tab->body().readLine, "read synthetic fixture · collected synthetic fixture");
        for (const Automation& row : bench.tab->registry().snapshot().items)
            EXPECT_TRUE(row.id.starts_with("example-") && row.schedule.ends_with("· synthetic"));
        const AgentBudget budget = bench.tab->agentOverview();
        ASSERT_EQ(budget.windows.size(), 2U);
        EXPECT_EQ(budget.windows[0].toolTip,
            "Read 0m ago. shared account · synthetic example. Guard: example only. Resets example window");
        EXPECT_EQ(budget.windows[1].line, "Codex · Server · 7d · 72% remaining");
        EXPECT_EQ(budget.schedules, "SCHEDULES   Mac 1   →   server 1   ·   cloud 1 unverified");
        bench.alerts.answers = { 0 };
        bench.tab->confirm("plan", bench.item());
        bench.settle();
        EXPECT_EQ(bench.lastAction(), "✗ Public fixture is read-only");
    }
}

} // namespace
