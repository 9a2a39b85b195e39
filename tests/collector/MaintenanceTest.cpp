// SPDX-License-Identifier: Apache-2.0
#include "collector/Maintenance.h"
#include "collector/LocalAnalyst.h"
#include "core/Text.h"

#include "collector/CollectorBench.h"
#include "support/FakeAlerts.h"

#include <set>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Calls = std::vector<std::string>;

constexpr const char* good = R"({"ts":"now","ram":{},"swap":{}})";

/// The analyst and the maintenance commands beside an open insights tab.
struct Bench : CollectorBench {
    Bench()
    {
        panel.tab = OstrelMode::diagnosis;
        maintenance.connect(panel);
        analyst.connect(panel);
        cycle->setBusy(
            [this] { return analyst.diagnosisRunning() || !maintenance.cleanupRunning().empty(); });
    }

    void close()
    {
        cycle->panelDidClose();
        maintenance.panelDidClose();
        analyst.panelDidClose();
    }

    /// The report without its times of day.
    [[nodiscard]] Calls report() const
    {
        Calls lines;
        for (const std::string& line : maintenance.cleanupReport()) {
            const bool timed = line.size() > 9 && line[2] == ':' && line[5] == ':' && line[8] == ' ';
            lines.push_back(timed ? "@" + line.substr(8) : line);
        }
        return lines;
    }

    /// The words behind the script's path, of each run since the last call.
    Calls runs()
    {
        Calls words;
        for (const auto& request : std::exchange(children.requests, {}))
            words.push_back(joined({ request.arguments.begin() + 1, request.arguments.end() }, " "));
        return words;
    }

    FakeAlerts alerts;
    Maintenance maintenance { { time, globalQueue, time, alerts }, runner, *cycle };
    LocalAnalyst analyst { { time, globalQueue, alerts }, runner, *cycle, maintenance };
};

constexpr const char* waitLine = "Wait for the current snapshot or maintenance operation to finish.";
constexpr const char* auditLine = "@ read-only audit…";
constexpr const char* counts = R"({"mcp_processes":7,"found":2})";
constexpr const char* counted
    = "MCP audit: 7 observed; 2 detached for review. 0 terminated. All discovered processes protected.";

TEST(Maintenance, TellsEachAnswerInOneSentence)
{
    const std::string history = "Own history: ";
    const std::string rest
        = " bytes. No RAM freed. Disk freed 0 bytes; an applied compaction retains a backup.";
    struct Case {
        const char* command;
        CollectorResult result;
        std::string sentence;
    };
    const Case cases[] {
        { "clean", { counts, 0 }, counted },
        { "clean", { R"({"mcp_processes":"many","found":[1,null]})", 0 },
            "MCP audit: many observed; [1,null] detached for review. 0 terminated. All discovered processes "
            "protected." },
        { "clean", { "{}", 0 },
            "MCP audit: 0 observed; 0 detached for review. 0 terminated. All discovered processes "
            "protected." },
        { "history-clean", { R"({"status":"preview","before_bytes":9000,"after_bytes":120.5})", 0 },
            history + "preview; 9000 → 120.5" + rest },
        { "history-clean", { "{}", 0 }, history + "unknown; 0 → 0" + rest },
        { "clean", { "[]", 0 }, "Failed: invalid response" },
        { "clean", { "{\"a\":\"\xff\"}", 0 }, "Failed: invalid response" },
        { "clean", { counts, 1, "no such file" }, "Failed: no such file" },
        { "history-clean", { "", 15, "" }, "Failed: invalid response" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(maintenanceResult(c.command, c.result), c.sentence);
}

TEST(Maintenance, RunsOneCommandAtATimeAndNoneBesideASnapshot)
{
    Bench bench;
    bench.cycle->fetchPythonData();
    bench.maintenance.runClean();
    EXPECT_EQ(bench.report(), Calls { waitLine });
    bench.answer(good);
    bench.deliver();
    EXPECT_EQ(bench.runs(), Calls { "json" });
    bench.calls();
    bench.maintenance.runClean();
    EXPECT_EQ(bench.calls(), (Calls { "forced", "render" }));
    EXPECT_TRUE(bench.maintenance.cleanupRunning().contains("orphan-mcp"));
    bench.maintenance.trimLogs();
    bench.cycle->fetchPythonData();
    bench.calls();
    bench.answer(counts);
    bench.deliver();
    EXPECT_EQ(bench.runs(), Calls { "clean" }) << "neither the preview nor a snapshot began meanwhile";
    EXPECT_EQ(bench.calls(), (Calls { "forced", "render" }));
    EXPECT_TRUE(bench.maintenance.cleanupRunning().empty());
    EXPECT_EQ(bench.maintenance.cleanupLastResult(), counted);
    EXPECT_EQ(bench.report(), (Calls { waitLine, auditLine, waitLine, std::string("@ ") + counted }));
}

TEST(Maintenance, CompactsOnlyAfterTheSecondButton)
{
    Bench bench;
    bench.maintenance.deepClean();
    EXPECT_TRUE(bench.alerts.asked.empty()) << "not within the press";
    bench.deliver();
    EXPECT_TRUE(bench.report().empty()) << "closing the question cancels";
    bench.alerts.answers = { 1 };
    bench.maintenance.deepClean();
    bench.time.runPosted();
    EXPECT_EQ(bench.alerts.asked.at(1).title, "Compact OSTREL history?");
    EXPECT_EQ(bench.alerts.asked.at(1).text,
        "Keep the latest 120 samples and retain a full backup. No processes, session files, swap or other "
        "apps' logs are changed. The backup retains the original data; total disk use may grow.");
    EXPECT_EQ(bench.alerts.asked.at(1).buttons, (Calls { "Cancel", "Compact own history" }));
    EXPECT_TRUE(bench.maintenance.cleanupRunning().contains("deep-clean"));
    bench.deliver();
    bench.maintenance.trimLogs();
    EXPECT_TRUE(bench.maintenance.cleanupRunning().contains("trim-logs"));
    bench.deliver();
    EXPECT_EQ(bench.runs(), (Calls { "history-clean --apply", "history-clean" }));
    EXPECT_EQ(bench.report().at(0), "@ compacting own history…");
    EXPECT_EQ(bench.report().at(2), auditLine);
}

TEST(Maintenance, AClosingForgetsTheRunAndEvenItsFailure)
{
    Bench bench;
    bench.maintenance.runClean();
    bench.close();
    bench.maintenance.runClean();
    bench.calls();
    bench.answer("", 15);
    bench.answer(counts);
    bench.globalQueue.run();
    bench.panel.open = false;
    bench.time.runPosted();
    EXPECT_EQ(bench.calls(), Calls { "render" })
        << "of the second run alone, and no report on a closed panel";
    EXPECT_EQ(bench.report(), (Calls { auditLine, auditLine, std::string("@ ") + counted }));
    EXPECT_TRUE(bench.maintenance.cleanupRunning().empty());
}

TEST(Maintenance, TheReportKeepsItsLastLinesAndShowsOnItsOwnTabAlone)
{
    Bench bench;
    for (int line = 0; line < 25; ++line)
        bench.maintenance.report("line " + std::to_string(line));
    EXPECT_EQ(bench.maintenance.cleanupReport().size(), 24U);
    EXPECT_EQ(bench.maintenance.cleanupReport().front(), "line 1");
    EXPECT_EQ(bench.calls().size(), 25U);
    bench.panel.tab = OstrelMode::overview;
    bench.maintenance.report("unseen");
    EXPECT_TRUE(bench.calls().empty());
}

TEST(LocalAnalyst, FeedsTheSnapshotBackAndShowsWhatCameOfIt)
{
    Bench bench;
    bench.analyst.runDiagnosis();
    EXPECT_EQ(bench.calls(), (Calls { "render", "render" }));
    EXPECT_EQ(bench.analyst.diagnosis().text, "Wait for a snapshot first.");
    EXPECT_FALSE(bench.analyst.diagnosisRunning());
    bench.fetch(good);
    bench.runs();
    bench.calls();
    bench.analyst.runDiagnosis();
    bench.analyst.runDiagnosis();
    bench.cycle->fetchPythonData();
    EXPECT_TRUE(bench.analyst.diagnosis().empty()) << "the old result went at once";
    EXPECT_EQ(bench.waiting(), 1U) << "neither twice, nor beside a snapshot";
    bench.answer(R"({"findings":[{"title":"A"}],"actions":[{"label":"l","kind":"k","reason":"why"}]})");
    bench.globalQueue.run();
    EXPECT_EQ(bench.children.requests.at(0).input, good);
    EXPECT_EQ(bench.runs(), Calls { "analyze --stdin" });
    bench.time.runPosted();
    EXPECT_EQ(bench.calls(), (Calls { "render", "render" }));
    EXPECT_EQ(bench.analyst.diagnosis().summary, "local CLI · analysis ready · 1 action");
    bench.panel.tab = OstrelMode::system;
    bench.analyst.runDiagnosis();
    bench.calls();
    bench.deliver();
    EXPECT_TRUE(bench.calls().empty()) << "another tab isn't drawn anew";
    EXPECT_EQ(bench.analyst.diagnosis().text, "analysis failed (exit 0).");
}

TEST(LocalAnalyst, DropsTheAnswerOfAPanelThatHasClosed)
{
    Bench bench;
    bench.fetch(good);
    bench.analyst.runDiagnosis();
    bench.close();
    EXPECT_FALSE(bench.analyst.diagnosisRunning());
    bench.answer("late");
    bench.calls();
    bench.deliver();
    EXPECT_TRUE(bench.analyst.diagnosis().empty());
    EXPECT_TRUE(bench.calls().empty());
}

TEST(LocalAnalyst, ASuggestionExplainsItselfAndLeavesOneLine)
{
    Bench bench;
    bench.fetch(good);
    bench.answer(R"([{"label":"look at x","kind":"k"}])");
    bench.analyst.runDiagnosis();
    bench.deliver();
    bench.analyst.execDiagAction(1);
    bench.time.runPosted();
    EXPECT_TRUE(bench.alerts.asked.empty()) << "there is no second one";
    bench.alerts.meanwhile = [&] { bench.analyst.runDiagnosis(); };
    bench.analyst.execDiagAction(0);
    bench.time.runPosted();
    ASSERT_EQ(bench.alerts.asked.size(), 1U);
    EXPECT_EQ(bench.alerts.asked[0].title, "look at x");
    EXPECT_EQ(bench.alerts.asked[0].text,
        "\n\nInspection only. No process was terminated and no app was closed. RSS is an observed footprint, "
        "not "
        "a guaranteed saving.");
    EXPECT_EQ(bench.report(), Calls { "@ inspected look at x; 0 processes terminated" });
}

/// Everything that the tab shows, on one line each.
std::string told(const Diagnosis& diagnosis)
{
    std::string text = "[" + diagnosis.summary + "] [" + diagnosis.text + "]";
    for (const DiagAction& action : diagnosis.actions)
        text += " " + action.label + "/" + action.kind + "/" + action.target + "/" + memLabel(action.estMB)
            + "/" + action.reason + "/" + action.risk;
    return text;
}

TEST(Diagnosis, ReadsEachFormOfAnswerAndDropsWhatLacksItsWords)
{
    struct Case {
        std::string output, shown;
        int status = 0;
    };
    const std::string deep = std::string(200, '[') + std::string(200, ']');
    const Case cases[] {
        { R"({"source":"x","summary":"two","findings":[{"title":"A","level":"warn","body":"b"},{"title":"C"},
            {"body":"no title"},7,{"title":8}],"actions":[{"label":"l","kind":"k","target":"t","est_mb":1536,
            "reason":"r","risk":"s"},{"label":"only"}]})",
            "[x · two · 1 action] [WARN · A\nb\n\nINFO · C\n] l/k/t/1.5 gb/r/s" },
        { "{}", "[local CLI · analysis ready · 0 actions] []" },
        { R"({"source":1,"summary":[],"findings":{"title":"A"},"actions":"no"})",
            "[local CLI · analysis ready · 0 actions] []" },
        { R"({"actions":[{"label":"l","kind":"k","est_mb":"12","reason":5},{"label":"m","kind":"k","est_mb":2.5},
            {"kind":"k"}]})",
            "[local CLI · analysis ready · 2 actions] [] l/k//0 mb// m/k//0 mb//" },
        { R"([{"label":"l","kind":"k","est_mb":900,"reason":"r","risk":"s"},{"label":"m","kind":"k"}])",
            "[legacy analyzer · 2 actions · tap to execute] [] l/k//900 mb// m/k//0 mb//" },
        { "[]", "[legacy analyzer · 0 actions · tap to execute] []" },
        { R"([{"label":"l","kind":"k"},3])", R"([] [[{"label":"l","kind":"k"},3]])" },
        { "3", "[] [3]" },
        { "all is well\n", "[] [all is well\n]" },
        { "{\"source\":", "[] [{\"source\":]" },
        { deep, "[] [" + deep + "]" },
        { "", "[] [analysis failed (exit 0).]" },
        { "{\"a\":\"\xff\"}", "[] [analysis failed (exit 0).]" },
        { "{}", "[] [analysis failed (exit 15).]", 15 },
        { "{}", "[] [analysis failed (exit -1).]", -1 },
    };
    for (const Case& c : cases)
        EXPECT_EQ(told(readDiagnosis(c.output, c.status, "local CLI")), c.shown);
}

TEST(Diagnosis, EachActionHasAnIdentityOfItsOwn)
{
    std::string output = "[";
    for (int at = 0; at < 100; ++at)
        output += std::string(at ? "," : "") + R"({"label":"l","kind":"k"})";
    std::set<std::string> ids;
    for (const DiagAction& action : readDiagnosis(output + "]", 0, "").actions) {
        EXPECT_EQ(action.id.size(), 36U);
        EXPECT_EQ(action.id[14], '4') << action.id;
        ids.insert(action.id);
    }
    EXPECT_EQ(ids.size(), 100U);
}

} // namespace
