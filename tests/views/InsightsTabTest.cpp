// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/ZOLShellLabel.h"

#include "support/QtEnvironment.h"

#include <QStringList>

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

constexpr const char* snapshot
    = R"({"ts":"12:00:00","ram":{},"swap":{"used_pct":85,"used_gb":3.4,"total_gb":4},
    "verdict":{"level":"warn","cause":"Two servers run twice."},"fan":{"mcp":7,"codex_mcp":2},
    "groups":{"app":1536},"accuracy":{"ram":"meminfo"}})";

constexpr const char* nothingFound = "nothing to report: swap, duplicates, idle sessions, agent leftovers, "
                                     "orphan mcp and the disk are all inside their thresholds";

constexpr const char* order = "MCP audit reports candidates without terminating them. History compaction "
                              "keeps 120 samples with a full "
                              "backup. It does not free RAM.";

struct OpenInsights : OpenTab {
    explicit OpenInsights(const std::string& text = snapshot)
        : OpenTab(OstrelMode::diagnosis, text)
    {
        // The janitor's first reading, which isn't this test's.
        deliver();
        settle();
    }

    void press(const char* name)
    {
        button(name)->click();
        settle();
    }

    /// What the tab says from one text on, up to another.
    [[nodiscard]] QStringList between(const QString& first, const QString& last)
    {
        const QStringList all = said();
        const auto from = all.indexOf(first);
        return from < 0 ? all : all.mid(from, all.indexOf(last, from) - from);
    }

    [[nodiscard]] QStringList analysis()
    {
        return between("analysis · local CLI", "cleanup · audit first · owned data only").mid(1);
    }

    /// Those below the findings.
    [[nodiscard]] QStringList captions()
    {
        QStringList all;
        for (const OstrelButton* button : ::all<OstrelButton>(page()))
            all.push_back(button->caption() + (button->isEnabled() ? "" : " (off)"));
        return all.mid(all.indexOf("open cleanup") + 1);
    }
};

TEST(InsightsTab, SaysWhatItHasFromTheTopDown)
{
    OpenInsights tab;
    const QStringList expected { "findings", "collector unavailable · the janitor collector returned nothing",
        nothingFound, "cleanup and its receipts have their own tab", "verdict of the snapshot collector",
        "Two servers run twice.", "src: collector verdict over one ps snapshot · 0s ago", "LOCAL COLLECTOR",
        "snapshot 100 ms · source local CLI",
        "snapshot: python3 ostrel.py json · analysis: python3 ostrel.py analyze", "collector: /opt/ostrel.py",
        "no listening port · no localhost server · no browser surface", "CURRENT FACTS BEFORE ANALYZE",
        "swap 3.40/4.0 gb (85%) · trend over 0 saved samples: history warming up",
        "mcp total 7 · codex 2 · claude 0 · other 0", "launchd storm 0 · interval jobs 0 · shell-first 0",
        "readings with a published method: ram", "analysis · local CLI",
        "not run yet – press local analyst; it does not spawn Claude or MCP",
        "cleanup · audit first · owned data only", "PRESSURE READ",
        "swap 3.40/4.0 gb (85%) · free 0.00 gb · apps 1.5 gb", "hot now: no hot process in snapshot",
        "Resident swap is historical allocation. This tool never purges swap or closes sessions.", "ORDER",
        order, "current: Codex duplicate groups 0 · collector local CLI · observed heavy app: none obvious",
        "report · what changed", "no runs yet – click an action above.",
        "Audit never terminates discovered processes. History compaction reports exact bytes.",
        "Use diagnosis to inspect active pressure. Keep control of other apps in those apps." };
    EXPECT_EQ(tab.said(), expected) << tab.said().join("\n").toStdString();
    EXPECT_EQ(tab.captions(),
        (QStringList { "▶ run local analyst", "1 audit mcp (read-only)", "2 preview own history",
            "compact own history…" }));
    for (const auto* label : all<ZOLShellLabel>(tab.page()))
        if (label->text().contains("apps 1.5 gb")) {
            EXPECT_EQ(label->palette().color(label->foregroundRole()), qColor(OstrelStyle::redBright.light));
        }
}

TEST(InsightsTab, TheAnalystRunsAndItsSuggestionsExplainThemselves)
{
    OpenInsights tab;
    tab.press("▶ run local analyst");
    EXPECT_EQ(tab.analysis(), QStringList { "running python3 ostrel.py analyze" });
    EXPECT_EQ(tab.captions().first(), "running local analysis… (off)");
    EXPECT_FALSE(tab.said().contains("CURRENT FACTS BEFORE ANALYZE"));
    tab.answer(R"({"source":"x","findings":[{"title":"A","body":"b"}],
        "actions":[{"label":"look","kind":"k","est_mb":2048,"reason":"why","risk":"low"},{"label":"other","kind":"k"}]})");
    tab.deliver();
    tab.settle();
    EXPECT_EQ(tab.analysis(), (QStringList { "x · analysis ready · 2 actions", "INFO · A\nb" }));
    EXPECT_EQ(tab.captions().mid(0, 3),
        (QStringList {
            "▶ run local analyst", "inspect · look · 2.0 gb observed", "inspect · other · 0 mb observed" }));
    EXPECT_FALSE(tab.said().contains("CURRENT FACTS BEFORE ANALYZE"));
    tab.press("look, ~2.0 gb · low – why");
    ASSERT_EQ(tab.alerts.asked.size(), 1U);
    EXPECT_EQ(tab.alerts.asked[0].title, "look");
    EXPECT_TRUE(tab.said().last().endsWith(" inspected look; 0 processes terminated")) << "shown at once";
    tab.press("▶ run local analyst");
    tab.answer("what is this?");
    tab.deliver();
    tab.settle();
    EXPECT_EQ(tab.analysis(), (QStringList { "couldn't parse actions – raw output:", "what is this?" }));
}

TEST(InsightsTab, ACommandRunsAloneAndItsResultStays)
{
    OpenInsights tab;
    tab.press("1 audit mcp (read-only)");
    EXPECT_EQ(tab.captions().mid(1),
        (QStringList { "⟳ running… (off)", "2 preview own history", "compact own history…" }));
    tab.press("2 preview own history");
    EXPECT_EQ(tab.said().last(), "Wait for the current snapshot or maintenance operation to finish.");
    tab.answer(R"({"mcp_processes":3,"found":1})");
    tab.deliver();
    tab.settle();
    const QString result
        = "MCP audit: 3 observed; 1 detached for review. 0 terminated. All discovered processes protected.";
    EXPECT_EQ(tab.between("LAST RESULT", "report · what changed"), (QStringList { "LAST RESULT", result }));
    EXPECT_TRUE(tab.said().last().endsWith(result));
    EXPECT_EQ(tab.captions().at(1), "1 audit mcp (read-only)");
    tab.delegate.panel().close("x");
    tab.delegate.panel().show();
    EXPECT_TRUE(tab.said().contains("LAST RESULT")) << "what was seen stays beyond a closing";
}

TEST(InsightsTab, LongAndOddTextsBreakWithinTheTab)
{
    const std::string word(4000, 'x');
    OpenInsights tab(R"({"ts":"t","ram":{},"swap":{},"verdict":{"cause":")" + word
        + R"( <b>&amp;</b>"},"offenders":[{"label":")" + word + R"("}]})");
    tab.press("▶ run local analyst");
    tab.answer(R"([{"label":")" + word + R"(","kind":"k"}])");
    tab.deliver();
    tab.settle();
    EXPECT_EQ(tab.page().width(), 728);
    for (const auto* label : all<ZOLShellLabel>(tab.page()))
        EXPECT_LE(label->mapTo(&tab.page(), QPoint(label->width(), 0)).x(), 728)
            << label->text().left(30).toStdString();
}

} // namespace
