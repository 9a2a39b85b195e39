// SPDX-License-Identifier: Apache-2.0
#include "panel/InsightsText.h"

#include <string>
#include <tuple>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Lines = std::vector<std::string>;

OstrelData snapshot(const char* text) { return OstrelData::parse(*json::parseObject(text)); }

TEST(InsightsText, SaysTheSnapshotsFiguresAndWhatIsMissing)
{
    const OstrelData empty = snapshot("{}");
    const auto nothing = currentFacts(empty);
    EXPECT_EQ(nothing[0], "swap 0.00/0.0 gb (0%) · trend over 0 saved samples: history warming up");
    EXPECT_EQ(nothing[1], "mcp total 0 · codex 0 · claude 0 · other 0");
    EXPECT_EQ(nothing[3], "sources: the collector published no method map this run");
    EXPECT_EQ(hotNow(empty), "hot now: no hot process in snapshot");
    EXPECT_EQ(maintenanceOrder(empty, "error"),
        "current: Codex duplicate groups 0 · collector error · observed heavy app: none obvious");
    const OstrelData full = snapshot(R"({"swap":{"used_gb":1.255,"total_gb":4,"used_pct":31,"free_gb":2.7},
        "trend":{"samples":9,"summary":"rising"},
        "fan":{"mcp":9,"codex_mcp":4,"claude_mcp":3,"other_mcp":2,"codex_mcp_duplicates":2},
        "launchd":{"interval_jobs":1,"runatload_interval":2,"shell_first":3},"groups":{"app":2048},
        "accuracy":{"load":"a","ram":"b","else":"c"},
        "offenders":[{"label":"a","cpu":99.5,"risk":"stateful","rss":100},{"label":"b","cpu":1},
            {"label":"c","risk":"stateful","rss":2048,"cpu":2.4},{"label":"d"},{"label":"e","risk":"stateful"}]})");
    const std::array<std::string, 4> facts {
        "swap 1.25/4.0 gb (31%) · trend over 9 saved samples: rising",
        "mcp total 9 · codex 4 · claude 3 · other 2", "launchd storm 2 · interval jobs 1 · shell-first 3",
        "readings with a published method: ram · load" // in the readings' order
    };
    EXPECT_EQ(currentFacts(full), facts);
    EXPECT_EQ(hotNow(full), "hot now: a 100% · b 1% · c 2% · d 0%");
    EXPECT_EQ(maintenanceOrder(full, "local CLI"),
        "current: Codex duplicate groups 2 · collector local CLI · observed heavy app: "
        "a 100 mb / 100% · c 2.0 gb / 2%");
    EXPECT_EQ(pressureRead(full).text, "swap 1.25/4.0 gb (31%) · free 2.70 gb · apps 2.0 gb");
    for (const auto& [swap, alarming] :
        { std::pair { R"({"swap":{"used_pct":84}})", false }, { R"({"swap":{"used_pct":85}})", true } })
        EXPECT_EQ(pressureRead(snapshot(swap)).alarming, alarming) << swap;
}

TEST(InsightsText, ASuggestionNamesItsFootprintAndToTheEarAlsoItsRisk)
{
    for (const auto& [reason, risk, mb, told] :
        { std::tuple { "why", "low", 1536, "inspect · l · 1.5 gb observed|why|l, ~1.5 gb · low – why" },
            { "why", "", 900, "inspect · l · 900 mb observed|why|l, ~900 mb – why" },
            { "", "low", 0, "inspect · l · 0 mb observed||" } }) {
        const auto button = diagActionButton({ .label = "l", .estMB = mb, .reason = reason, .risk = risk });
        EXPECT_EQ(button.title + "|" + button.tooltip + "|" + button.accessibilityLabel, told);
    }
}

TEST(InsightsText, ShowsOneStateOfTheAnalysisAndWhichCommandRuns)
{
    using enum AnalysisView;
    for (const auto& [isRunning, diagnosis, view] :
        { std::tuple { false, Diagnosis {}, idle }, { true, { .summary = "s" }, running },
            { false, { .summary = "s" }, result }, { false, { .text = "t" }, raw } })
        EXPECT_EQ(analysisView(isRunning, diagnosis), view);
    Lines told;
    for (const MaintenanceButton& button : maintenanceButtons({ "deep-clean" }))
        told.push_back(fmt::format("{}|{}", button.title, button.running ? button.tooltip : ""));
    EXPECT_EQ(told,
        (Lines {
            "1 audit MCP (read-only)|", "2 preview own history|", "⟳ running…|this action is running" }));
}

TEST(InsightsText, ShowsTheReportsLastLinesOldestFirst)
{
    EXPECT_EQ(reportLines({}).size(), 3U);
    std::deque<std::string> report { "a", "b" };
    EXPECT_EQ(reportLines(report), (Lines { "a", "b" }));
    for (int line = 0; line < 20; ++line)
        report.push_back(std::to_string(line));
    const auto lines = reportLines(report);
    EXPECT_EQ(lines.size(), 14U);
    EXPECT_EQ(lines.front() + " " + lines.back(), "6 19");
}

} // namespace
