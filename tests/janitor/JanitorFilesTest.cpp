// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorTab.h"

#include "janitor/JanitorBench.h"

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Lines = JanitorBench::Lines;

constexpr const char* answered = R"({"receipts":[],"findings":[]})";

/// A listing of as many files.
std::string listing(int count, const std::string& title = "old things")
{
    json::Value files = json::Value::array();
    for (int file = 0; file < count; ++file)
        files.push_back({ { "path", "/h/f" + std::to_string(file) }, { "mb", 2 }, { "age_days", 20 } });
    return json::dump(
        { { "title", title }, { "count", count }, { "size_mb", 2.0 * count }, { "files", files } });
}

std::string fileLines(int count)
{
    std::string lines;
    for (int file = 0; file < count; ++file)
        lines += "2 mb · 20 d · /h/f" + std::to_string(file) + "\n";
    return lines;
}

TEST(JanitorFiles, TheQuestionListsWhatGoesAndPromisesWhatStays)
{
    const std::string removed = "\nthe files are removed from disk, a receipt is written to Ostrel/receipts";
    const std::string history
        = "\nsession history of Codex and Claude is not in this list and is never deleted";
    struct Case {
        const char* group;
        int count;
        std::string title, text;
    };
    const Case cases[] {
        { "agents-light", 1, "delete 1 files · 2 mb", fileLines(1) + removed + history },
        { "agents-deep", 8, "delete 8 files · 16 mb", fileLines(8) + removed + history },
        { "agent-screenshots", 9, "delete 9 files · 18 mb",
            fileLines(8) + "and 1 more, the largest first\n" + removed },
        { "app-caches", 600, "delete 600 files · 1.2 gb",
            fileLines(8) + "and 592 more, the largest first\n" + removed },
    };
    for (const Case& c : cases) {
        JanitorBench bench;
        bench.pressFiles(c.group, { listing(c.count) });
        ASSERT_EQ(bench.alerts.asked.size(), 1U);
        EXPECT_EQ(bench.question(), c.title + "\nold things\n\n" + c.text + "\ndelete [cancel] !");
        EXPECT_EQ(bench.lastAction(), "cancelled · old things");
        EXPECT_EQ(bench.runs(), Lines { std::string("preview --group=") + c.group })
            << "cancelling deletes nothing";
        EXPECT_TRUE(bench.tab.state().previews.contains(c.group)) << "and leaves the list on show";
    }
}

TEST(JanitorFiles, ALineOfTheQuestionCantBeForgedByANameWithLineBreaks)
{
    JanitorBench bench;
    bench.pressFiles("x", { R"({"count":1,"title":"a\nb","files":[{"path":"/h/\n\n9 gb · 1 d\r/etc"}]})" });
    EXPECT_TRUE(bench.alerts.asked.at(0).text.starts_with("a b\n\n0 mb · 0 d · /h/  9 gb · 1 d /etc\n\n"));
}

TEST(JanitorFiles, AListingWithNothingToDeleteAsksNothing)
{
    struct Case {
        std::string reply, counted, lastAction;
    };
    const Case cases[] {
        { listing(0), "0 files · 0 mb", "nothing to delete at this depth" },
        { R"({"count":-4,"size_mb":1})", "-4 files · 1 mb", "nothing to delete at this depth" },
        { R"({"count":3,"error":"no such group"})", "3 files · 0 mb", "no such group" },
        { "", "0 files · 0 mb", "the janitor collector returned nothing" },
    };
    for (const Case& c : cases) {
        JanitorBench bench;
        bench.pressFiles("g", { c.reply }, 0);
        EXPECT_TRUE(bench.alerts.asked.empty());
        EXPECT_EQ(bench.status(), c.counted + " in g · listed " + bench.clock());
        EXPECT_EQ(bench.lastAction(), c.lastAction);
        EXPECT_TRUE(bench.tab.state().previews.contains("g")) << "what was listed stays on show";
        bench.pressFiles("g", { listing(1) });
        EXPECT_EQ(bench.alerts.asked.size(), 1U) << "the flow has ended and begins again";
    }
}

TEST(JanitorFiles, AfterTheSecondPressTheScriptDeletesAndTheOutcomeIsToldPlainly)
{
    const std::string receipt = " · receipt ";
    struct Case {
        std::string reply, outcome;
        bool withReceipt;
    };
    const Case cases[] {
        { R"({"removed":3,"freed_mb":2048})", "✓ 3 files removed · 2.0 gb freed", true },
        { R"({"removed":2,"freed_mb":5,"failed_count":1})", "✓ 2 files removed · 5 mb freed · 1 refused",
            true },
        { R"({"removed":2,"freed_mb":5,"failed_count":1,"error":"stopped: disk"})",
            "cleanup stopped · stopped: disk · 2 files removed · 5 mb freed · 1 refused", true },
        { R"({"removed":0,"error":"never begun"})",
            "cleanup stopped · never begun · 0 files removed · 0 mb freed", false },
        { "", "cleanup failed · the script fell over · what was removed is unknown", false },
        { "[]", "cleanup failed · the janitor collector returned nothing · what was removed is unknown",
            false },
    };
    for (const Case& c : cases) {
        JanitorBench bench;
        bench.answer(listing(3));
        bench.answer(c.reply, c.reply.empty() ? 1 : 0, c.reply.empty() ? "the script fell over" : "");
        bench.alerts.answers = { 0 };
        bench.tab.pressFiles("agents-deep");
        EXPECT_EQ(bench.status(),
            "listing agent files older than 2 days and MCP packages no process loads; nothing is deleted "
            "yet");
        bench.globalQueue.run();
        bench.time.runPosted();
        EXPECT_EQ(bench.lastAction(), "deleting 3 files…");
        bench.settle();
        const std::string path = bench.engine.receipts().receiptsPathToday();
        EXPECT_EQ(bench.lastAction(),
            c.outcome + (c.withReceipt ? receipt + path.substr(path.rfind('/') + 1) : ""));
        EXPECT_FALSE(bench.tab.state().previews.contains("agents-deep"));
        EXPECT_EQ(bench.runs(),
            (Lines { "preview --group=agents-deep", "clean --group=agents-deep --apply", "receipts",
                "findings" }));
    }
}

TEST(JanitorFiles, CachesGoBySelectionAndNothingGoesThatWasPickedBehindTheList)
{
    JanitorBench bench;
    bench.pressFiles("app-caches", { listing(0) });
    EXPECT_EQ(bench.runs(), Lines { "preview --group=app-caches" }) << "none picked, none named";
    bench.tab.pickCache("pip", false);
    bench.tab.pickCache("a,b", false);
    bench.tab.pickCache("go build", false);
    bench.pressFiles("app-caches", { listing(2), R"({"removed":2})", answered, answered }, 0);
    EXPECT_EQ(bench.runs(),
        (Lines { "preview --group=app-caches --select=pip,go build",
            "clean --group=app-caches --apply --select=pip,go build", "receipts", "findings" }))
        << "a name that would be read as two is left out";
    bench.answer(listing(2));
    bench.alerts.answers = { 0 };
    bench.tab.pressFiles("app-caches");
    bench.tab.pickCache("npm", false);
    bench.deliver();
    EXPECT_EQ(bench.alerts.asked.size(), 1U) << "the list was for another selection";
    EXPECT_FALSE(bench.tab.state().previews.contains("app-caches"));
    EXPECT_EQ(bench.lastAction(), "the picked caches changed meanwhile; nothing was deleted, press again");
}

TEST(JanitorFiles, AFlowUnderWayTakesNoSecondPressAndQuestionsWaitForEachOther)
{
    JanitorBench bench;
    int mostUp = 0;
    bench.alerts.meanwhile = [&] {
        mostUp = std::max(mostUp, bench.alerts.up);
        if (bench.alerts.asked.size() > 1)
            return;
        bench.tab.pressFiles("a");
        bench.tab.pressFiles("b");
        bench.deliver(); // the loop goes on underneath
    };
    const auto twice = [&] { bench.tab.pressFiles("a"), bench.tab.pressFiles("a"); };
    bench.press(twice, { listing(1), listing(1) });
    EXPECT_EQ(bench.alerts.asked.size(), 2U);
    EXPECT_EQ(mostUp, 1);
    EXPECT_EQ(bench.runs(), (Lines { "preview --group=a", "preview --group=b" }));
    bench.alerts.meanwhile = nullptr;
    bench.pressFiles("a", { listing(1) });
    EXPECT_EQ(bench.alerts.asked.size(), 3U) << "both have ended";
}

TEST(JanitorTab, TheFirstBodyLoadsOnceAndOnlyItsOwnTabsAreDrawnAnew)
{
    JanitorBench bench;
    EXPECT_EQ(bench.status(), "findings are collected on a press");
    EXPECT_TRUE(bench.tab.cleanupBody().lastAction.empty());
    (void)bench.tab.findingsBody();
    EXPECT_EQ(bench.status(), "reading this Mac: ps, vm_stat, df, file ages");
    EXPECT_TRUE(bench.panel.calls.empty()) << "a body that is being drawn isn't drawn anew";
    const FindingsBody reading = bench.tab.findingsBody();
    EXPECT_EQ(reading.refresh.title + reading.nothing, "reading…");
    EXPECT_TRUE(reading.refresh.active && !reading.refresh.enabled);
    EXPECT_FALSE(bench.tab.cleanupBody().targets[1].buttons[0].enabled);
    bench.answer(R"({"findings":[{"level":"warning","title":"t"}]})");
    bench.answer(R"({"receipts":[{"ts":"1"},{"ts":"2"}]})");
    bench.answer(R"({"groups":["agents-light","app-caches","odd","agent-screenshots","product-builds"],
        "titles":{"odd":"Odd things"}})");
    bench.deliver();
    EXPECT_EQ(bench.runs(), (Lines { "findings", "receipts", "groups" }));
    EXPECT_EQ(bench.panel.calls, (Lines { "render", "render", "render" }));
    EXPECT_EQ(bench.status(), "1 findings · collected " + bench.clock());
    const CleanupBody body = bench.tab.cleanupBody();
    EXPECT_EQ(body.groupsTitle, "more groups · the same two presses");
    Lines groups;
    for (const GroupRow& row : body.groups)
        groups.push_back(row.clean.identifier + "=" + row.title + row.selected);
    EXPECT_EQ(groups,
        (Lines { "cleanup-group-app-caches=caches of the selected appsselected: none chosen; pick caches in "
                 "settings",
            "cleanup-group-odd=Odd things",
            "cleanup-group-agent-screenshots=agent screenshots older than 7 days",
            "cleanup-group-product-builds=product build output older than 14 days" }))
        << "agents have rows of their own";
    EXPECT_EQ(body.receipts, (Lines { "1 · action", "2 · action" }));
    bench.panel.tab = OstrelMode::system;
    bench.panel.calls.clear();
    bench.tab.refreshFindings();
    bench.tab.refreshFindings();
    bench.answer("", 1, "no python");
    bench.deliver();
    EXPECT_TRUE(bench.panel.calls.empty());
    EXPECT_EQ(bench.runs(), Lines { "findings" });
    EXPECT_EQ(bench.status(), "collector unavailable · no python");
    EXPECT_FALSE(bench.tab.findingsBody().nothing.empty());
}

TEST(JanitorTab, AReadingFromBeforeAnActionDoesNotReplaceTheOneBehindIt)
{
    JanitorBench bench;
    bench.tab.refreshFindings();
    const auto late = std::move(bench.globalQueue.waiting.front());
    bench.globalQueue.waiting.clear();
    bench.pressFiles(
        "g", { listing(1), R"({"removed":1})", answered, R"({"findings":[{"title":"new"}]})" }, 0);
    bench.answer(R"({"findings":[{"title":"old"},{"title":"older"}]})");
    late.second();
    bench.settle();
    ASSERT_EQ(bench.tab.state().findings.size(), 1U);
    EXPECT_EQ(bench.tab.state().findings[0].title, "new");
}

TEST(JanitorTab, WhatWasListedStandsInItsRow)
{
    JanitorBench bench;
    bench.pressFiles("agents-deep", { listing(5) });
    bench.pressFiles("odd", { R"({"error":"no roots"})" });
    bench.pressFiles("app-caches", { listing(4) });
    bench.pressProcesses("light", { killJson({ processJson(70, "srv", 12, "x", 5, "orphan") }) });
    bench.answer(answered);
    bench.answer(answered);
    bench.answer(R"({"groups":["odd","app-caches"]})");
    (void)bench.tab.cleanupBody();
    bench.deliver();
    const CleanupBody body = bench.tab.cleanupBody();
    Lines listed;
    for (const TargetRow& row : body.targets)
        for (const auto& [title, lines] : row.listed)
            listed.push_back(title + ": " + joined(lines, ", "));
    for (const GroupRow& row : body.groups)
        listed.push_back(row.amount + row.error + ": " + joined(row.lines, ", "));
    const std::string files = "2 mb · 20 days · /h/f0, 2 mb · 20 days · /h/f1, 2 mb · 20 days · /h/f2";
    EXPECT_EQ(listed,
        (Lines { "deep · 5 files · 10 mb: " + files,
            "light · 1 processes · 12 mb: pid 70 · srv · 12 mb · orphan",
            "no roots: ", "4 files · 8 mb: " + files }));
    const auto& deep = body.targets[1].buttons[1];
    EXPECT_EQ(deep.identifier + ": " + deep.title + ", " + deep.tooltip,
        "cleanup-mcp-deep: review idle MCP, deep preview: inspect the exact list and volume before "
        "confirming any action");
    EXPECT_EQ(body.receipts, Lines { "no action yet; a stop or a cleanup writes a line here" });
}

TEST(JanitorSettings, AddingAProtectedNameIsToldAndLeavesNoReceipt)
{
    JanitorBench bench;
    bench.panel.tab = OstrelMode::settings;
    EXPECT_FALSE(bench.tab.protectName(" \t")) << "the field keeps its text";
    EXPECT_TRUE(bench.panel.calls.empty());
    EXPECT_TRUE(bench.tab.protectName("Node"));
    EXPECT_EQ(bench.lastAction(), "node added to the protection list");
    EXPECT_EQ(bench.tab.protection().extra(), Lines { "node" });
    EXPECT_EQ(bench.panel.calls, Lines { "render" });
    EXPECT_TRUE(bench.receipts().empty());
}

TEST(JanitorSettings, TakingAProtectionOffIsAskedInATurnOfItsOwnAndLeavesAReceipt)
{
    JanitorBench bench;
    bench.tab.confirmUnprotect("orca");
    bench.tab.confirmUnprotect("orca");
    EXPECT_TRUE(bench.alerts.asked.empty()) << "not within the press";
    bench.deliver();
    ASSERT_EQ(bench.alerts.asked.size(), 1U);
    EXPECT_EQ(bench.question(),
        "remove orca from the protection list\nafter this the janitor may offer to stop a process named "
        "orca.\nagent names claude and codex and OSTREL itself stay protected whatever this list says.\n"
        "remove protection [cancel] !");
    EXPECT_TRUE(bench.tab.protection().isProtected("orca", "") && bench.receipts().empty());
    bench.press([&] { bench.tab.confirmUnprotect("orca"); }, {}, 0);
    EXPECT_FALSE(bench.tab.protection().isProtected("orca", ""));
    EXPECT_EQ(bench.lastAction(), "orca is no longer protected · receipt written");
    ASSERT_EQ(bench.receipts().size(), 1U);
    json::Value receipt = bench.receipts()[0];
    receipt.erase("ts");
    EXPECT_EQ(
        receipt, (json::Value { { "kind", "protection" }, { "name", "orca" }, { "change", "removed" } }));
    for (const ProtectedRow& row : bench.tab.settingsSection().rows) {
        EXPECT_NE(row.name, "orca");
        EXPECT_EQ(row.locked, row.name == "claude" || row.name == "codex" || row.name == "ostrel app");
        EXPECT_EQ(row.text, row.name + (row.locked ? " · locked by rule 44" : ""));
    }
}

TEST(JanitorSettings, CachesAreListedOnAPressAndPickedByName)
{
    JanitorBench bench;
    EXPECT_TRUE(bench.tab.settingsSection().listCaches);
    Lines caches;
    for (int cache = 0; cache < 9; ++cache)
        caches.push_back(R"({"name":"c)" + std::to_string(cache) + R"(","size_mb":2048})");
    bench.press([&] { bench.tab.listCaches(); }, { R"({"candidates":[)" + joined(caches, ",") + "]}" });
    bench.tab.pickCache("c8", false);
    bench.pressFiles("app-caches", { listing(1) });
    bench.tab.pickCache("c1", false);
    EXPECT_EQ(bench.lastAction(), "c1 added to the cleanup list");
    EXPECT_FALSE(bench.tab.state().previews.contains("app-caches")) << "listed for the old selection";
    const JanitorSection section = bench.tab.settingsSection();
    EXPECT_FALSE(section.listCaches);
    EXPECT_EQ(section.picked, "c8 · c1");
    ASSERT_EQ(section.caches.size(), 8U);
    EXPECT_EQ(section.caches[1].text, "c1 · 2.0 gb");
    EXPECT_EQ(section.caches[0].pick.title + section.caches[1].pick.title, "pickremove");
    bench.tab.pickCache("c8", true);
    EXPECT_EQ(bench.lastAction(), "c8 removed from the cleanup list");
    EXPECT_EQ(bench.tab.cacheTargets(), Lines { "c1" });
}

TEST(JanitorTab, TheFolderOfReceiptsIsMadeBeforeItIsOpened)
{
    JanitorBench bench;
    bench.tab.openReceipts();
    EXPECT_EQ(bench.files.folders, Lines { "/home/someone/Library/Application Support/Ostrel/receipts" });
    EXPECT_EQ(bench.workspace.opened,
        Lines { "file:///home/someone/Library/Application%20Support/Ostrel/receipts" });
}

} // namespace
