// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

namespace {

using namespace ostrel;

struct OpenInsights : OpenTab {
    OpenInsights()
        : OpenTab(OstrelMode::diagnosis, R"({"ts":"12:00:00","ram":{},
            "swap":{"used_pct":85,"used_gb":3.4,"total_gb":4},"groups":{"app":1536},
            "verdict":{"level":"warn","cause":"Two servers run twice."},"fan":{"mcp":7,"codex_mcp":2},
            "accuracy":{"ram":"meminfo"}})")
    {
        // The janitor's first reading, which isn't this test's.
        work();
    }

    /// What the tab says from behind one text on, up to another.
    [[nodiscard]] QStringList between(const QString& first, const QString& last)
    {
        const QStringList all = said();
        const auto from = all.indexOf(first) + 1;
        return all.mid(from, all.indexOf(last, from) - from);
    }
    [[nodiscard]] QStringList analysis()
    {
        return between("analysis · local CLI", "cleanup · audit first · owned data only");
    }
    /// Those below the findings.
    [[nodiscard]] QStringList actions()
    {
        const QStringList all = captions();
        return all.mid(all.indexOf("open cleanup") + 1);
    }
    void answerWith(const std::string& text)
    {
        answer(text);
        deliver();
        settle();
    }
};

TEST(InsightsTab, SaysWhatItHasFromTheTopDown)
{
    OpenInsights tab;
    EXPECT_EQ(
        tab.expectSaid({ "findings", "collector unavailable · ", "nothing to report: ",
            "cleanup and its receipts have their own tab", "verdict of the snapshot collector",
            "Two servers run twice.", "src: collector verdict over one ps snapshot · 0s ago",
            "LOCAL COLLECTOR", "snapshot 100 ms · source local CLI",
            "snapshot: ", "collector: /opt/ostrel.py", "no listening port", "CURRENT FACTS BEFORE ANALYZE",
            "swap 3.40/4.0 gb (85%)", "mcp total 7 · codex 2", "launchd storm 0", "readings with a",
            "analysis · local CLI", "not run yet – press local analyst; it does not spawn Claude or MCP",
            "cleanup · audit first · owned data only", "PRESSURE READ", "swap 3.40/4.0 gb (85%)", "hot now: ",
            "Resident swap", "ORDER", "MCP audit reports", "current: Codex", "report · what changed",
            "no runs yet", "Audit never terminates discovered processes.", "Use diagnosis to inspect" }),
        tab.said().size());
    EXPECT_EQ(tab.actions(),
        (QStringList { "▶ run local analyst", "1 audit mcp (read-only)", "2 preview own history",
            "compact own history…" }));
    EXPECT_EQ(tab.colors("swap 3.40/4.0 gb (85%) · free 0.00 gb · apps 1.5 gb"),
        std::vector { qColor(OstrelStyle::redBright.light) });
}

TEST(InsightsTab, TheAnalystRunsAndItsSuggestionsExplainThemselves)
{
    OpenInsights tab;
    tab.press("▶ run local analyst");
    EXPECT_EQ(tab.analysis(), QStringList { "running python3 ostrel.py analyze" });
    EXPECT_EQ(tab.actions().first(), "running local analysis… (on) (off)");
    EXPECT_FALSE(tab.said().contains("CURRENT FACTS BEFORE ANALYZE"));
    tab.answerWith(
        R"({"source":"x","findings":[{"title":"A","body":"b"}],"actions":[{"label":"look","kind":"k",
        "est_mb":2048,"reason":"why","risk":"low"},{"label":"other","kind":"k"}]})");
    EXPECT_EQ(tab.analysis(), (QStringList { "x · analysis ready · 2 actions", "INFO · A\nb" }));
    EXPECT_EQ(tab.actions().mid(0, 3),
        (QStringList {
            "▶ run local analyst", "inspect · look · 2.0 gb observed", "inspect · other · 0 mb observed" }));
    EXPECT_FALSE(tab.said().contains("CURRENT FACTS BEFORE ANALYZE"));
    tab.press("look, ~2.0 gb · low – why");
    ASSERT_EQ(tab.alerts.asked.size(), 1U);
    EXPECT_EQ(tab.alerts.asked[0].title, "look");
    EXPECT_TRUE(tab.said().last().endsWith(" inspected look; 0 processes terminated")) << "shown at once";
    tab.press("▶ run local analyst");
    tab.answerWith("what is this?");
    EXPECT_EQ(tab.analysis(), (QStringList { "couldn't parse actions – raw output:", "what is this?" }));
}

TEST(InsightsTab, ACommandRunsAloneAndItsResultStays)
{
    OpenInsights tab;
    tab.press("1 audit mcp (read-only)");
    EXPECT_EQ(tab.actions().mid(1),
        (QStringList { "⟳ running… (on) (off)", "2 preview own history", "compact own history…" }));
    tab.press("2 preview own history");
    EXPECT_EQ(tab.said().last(), "Wait for the current snapshot or maintenance operation to finish.");
    tab.answerWith(R"({"mcp_processes":3,"found":1})");
    const QString result
        = "MCP audit: 3 observed; 1 detached for review. 0 terminated. All discovered processes protected.";
    EXPECT_EQ(tab.between("LAST RESULT", "report · what changed"), QStringList { result });
    EXPECT_TRUE(tab.said().last().endsWith(result));
    EXPECT_EQ(tab.actions().at(1), "1 audit mcp (read-only)");
    tab.delegate.panel().close("x");
    tab.delegate.panel().show();
    EXPECT_TRUE(tab.said().contains("LAST RESULT")) << "what was seen stays beyond a closing";
}

} // namespace
