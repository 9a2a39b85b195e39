// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include "core/Text.h"

#include <QLineEdit>

namespace {

using namespace ostrel;

/// A tab of the janitor's.
struct OpenJanitor : OpenTab {
    explicit OpenJanitor(OstrelMode mode, Answers given = {})
        : OpenTab(mode, snapshotText(3), std::move(given))
    {
        work();
    }

    /// Presses the button and lets all of it happen.
    void pressed(const QString& name)
    {
        press(name);
        work();
    }

    /// What the script was last asked with that subcommand.
    [[nodiscard]] std::string asked(const std::string& subcommand) const
    {
        std::string last;
        for (const platform::ChildRequest& request : children.requests)
            if (request.arguments.at(1) == subcommand)
                last = joined({ request.arguments.begin() + 2, request.arguments.end() }, " ");
        return last;
    }

    [[nodiscard]] QLineEdit& field() { return named<QLineEdit>("protect-field"); }
};

constexpr const char* findings = R"({"findings":[
    {"id":"a","level":"critical","title":"swap","seen":"much","source":"meminfo","proposal":"look",
     "action":{"kind":"open-tab","target":"system"}},
    {"id":"b","level":"warning","title":"servers","seen":"two","source":"ps","proposal":"stop","est_mb":2048,
     "count":2,"action":{"kind":"kill","pids":[70,71]}},
    {"id":"c","title":"files","seen":"old","source":"ages","proposal":"review","count":7,
     "action":{"kind":"clean","group":"agents-light"}},
    {"id":"d","title":"disk","seen":"fine","source":"df","proposal":"none"}]})";

TEST(JanitorViews, FindingsStandAboveTheVerdictAndEachLeadsWhereItSays)
{
    OpenJanitor tab(OstrelMode::diagnosis, { { "findings", findings } });
    tab.expectSaid({ "findings", "4 findings · collected ", "CRITICAL", "swap", "much", "source: meminfo",
        "proposal: look", "WARNING", "servers", "2.0 gb · 2", "two", "source: ps", "proposal: stop", "INFO",
        "files", "7", "old", "source: ages", "proposal: review", "INFO", "disk", "fine", "source: df",
        "proposal: none", "cleanup and its receipts have their own tab",
        "verdict of the snapshot collector" });
    for (const auto& [level, color] : { std::pair("CRITICAL", OstrelStyle::red),
             { "WARNING", OstrelStyle::ink }, { "INFO", OstrelStyle::muted } })
        EXPECT_EQ(tab.colors(level).front(), qColor(color.light)) << level;

    const std::tuple<const char*, int, OstrelMode> presses[] { { "open system", 220, OstrelMode::system },
        { "finding-c", 220, OstrelMode::cleanup }, { "stop 2 processes…", 240, OstrelMode::diagnosis } };
    for (const auto& [name, width, mode] : presses) {
        tab.delegate.frame().switchMode(OstrelMode::diagnosis);
        EXPECT_EQ(tab.control(name)->width(), width);
        tab.pressed(name);
        EXPECT_EQ(tab.delegate.frame().mode(), mode) << name;
    }
    EXPECT_EQ(tab.asked("kill-preview"), "--pids=70,71");
    EXPECT_TRUE(tab.said().contains("nothing to stop: all 0 processes are protected"));
}

TEST(JanitorViews, EveryButtonOfTheCleanupListsItsOwnAndIsOffWhileFindingsAreRead)
{
    OpenJanitor tab(OstrelMode::cleanup,
        { { "groups", R"({"groups":["agents-light","agent-screenshots","app-caches"]})" } });
    tab.defaults.setTextArray("ostrel.cacheTargets", { "pip", "npm" });
    const QSize depth(360, 44), group(110, 28);
    const std::tuple<const char*, QSize, const char*, const char*> presses[] {
        { "cleanup-agents-light", depth, "preview", "--group=agents-light" },
        { "cleanup-agents-deep", depth, "preview", "--group=agents-deep" },
        { "cleanup-mcp-light", depth, "mcp-preview", "--depth=light" },
        { "cleanup-mcp-deep", depth, "mcp-preview", "--depth=deep" },
        { "cleanup-group-agent-screenshots", group, "preview", "--group=agent-screenshots" },
        { "cleanup-group-app-caches", group, "preview", "--group=app-caches --select=pip,npm" },
    };
    for (const auto& [identifier, size, subcommand, arguments] : presses) {
        ASSERT_TRUE(tab.control(identifier)) << identifier;
        EXPECT_EQ(tab.control(identifier)->size(), size) << identifier;
        tab.pressed(identifier);
        EXPECT_EQ(tab.asked(subcommand), arguments);
    }
    tab.pressed("open receipts");
    EXPECT_EQ(tab.workspace.opened.size(), 1U);

    tab.delegate.frame().switchMode(OstrelMode::diagnosis);
    tab.button("refresh findings")->click();
    tab.delegate.frame().switchMode(OstrelMode::cleanup);
    for (const auto& [identifier, size, subcommand, arguments] : presses)
        EXPECT_EQ(tab.control(identifier)->isEnabled(), size == group) << identifier;
}

TEST(JanitorViews, WhatWasListedStaysBelowItsRowAndAnErrorIsRed)
{
    std::string files;
    for (int n = 0; n < 500; ++n)
        files += std::string(n ? "," : "") + R"({"path":"~/)" + std::string(300, 'p')
            + R"(","mb":2,"age_days":20})";
    OpenJanitor tab(OstrelMode::cleanup,
        { { "groups", R"({"groups":["product-builds"],"titles":{"product-builds":"builds"}})" },
            { "preview", R"({"count":500,"size_mb":2048,"title":"old","files":[)" + files + "]}" } });
    tab.pressed("cleanup-agents-deep");
    ASSERT_EQ(tab.alerts.asked.size(), 1U) << "cancelled at once";
    EXPECT_TRUE(tab.said().contains("deep · 500 files · 2.0 gb"));
    EXPECT_TRUE(tab.said().contains("cancelled · old"));
    EXPECT_EQ(std::ranges::count_if(
                  all<ZOLShellLabel>(tab.page()), [](const ZOLShellLabel* label) { return label->isCut(); }),
        3)
        << "three files, a line each";
    tab.answers["preview"] = R"({"error":"no list of projects"})";
    tab.pressed("cleanup-group-product-builds");
    EXPECT_EQ(tab.colors("no list of projects"),
        (std::vector { qColor(OstrelStyle::ink.light), qColor(OstrelStyle::red.light) }))
        << "the last action, and below the group";
}

TEST(JanitorViews, TheSettingsProtectAndUnprotectAndPickCaches)
{
    OpenJanitor tab(OstrelMode::settings,
        { { "caches", R"({"candidates":[{"name":"pip","size_mb":2048},{"name":"npm","size_mb":9}]})" } });
    EXPECT_EQ(tab.field().width(), 240);
    EXPECT_FALSE(tab.control("unprotect-claude"));
    EXPECT_EQ(tab.colors("claude · locked by rule 44"), std::vector { qColor(OstrelStyle::muted.light) });
    tab.field().setText("  ");
    tab.pressed("protect this name");
    EXPECT_EQ(tab.field().text(), "  ") << "blanks change nothing";
    tab.field().setFocus();
    tab.field().setText("Node");
    tab.pressed("protect this name");
    EXPECT_TRUE(tab.said().contains("node"));
    EXPECT_EQ(tab.field().text(), "") << "ready for the next";

    tab.alerts.answers = { 0 };
    tab.pressed("unprotect-node");
    ASSERT_EQ(tab.alerts.asked.size(), 1U);
    EXPECT_EQ(tab.alerts.asked[0].title, "remove node from the protection list");
    EXPECT_FALSE(tab.said().contains("node"));

    tab.pressed("list the biggest caches");
    EXPECT_EQ(tab.colors("pip · 2.0 gb"), std::vector { qColor(OstrelStyle::muted.light) });
    tab.pressed("cache-pip");
    EXPECT_EQ(tab.colors("pip · 2.0 gb"), std::vector { qColor(OstrelStyle::ink.light) }) << "picked";
    EXPECT_EQ(tab.control("cache-pip")->caption(), "remove");
    EXPECT_EQ(tab.delegate.janitorTab().cacheTargets(), std::vector<std::string> { "pip" });
}

TEST(JanitorViews, TheKeyboardComesBackToWhatWasOffAndWhatIsTypedStays)
{
    OpenJanitor tab(OstrelMode::diagnosis);
    tab.button("refresh findings")->setFocus();
    tab.press("refresh findings");
    EXPECT_EQ(tab.keyboard(), &tab.root()) << "what is off can't have it";
    tab.work();
    EXPECT_EQ(tab.keyboard(), tab.button("refresh findings"));

    tab.delegate.frame().switchMode(OstrelMode::settings);
    QLineEdit& field = tab.field();
    field.setFocus();
    field.setText("half a name");
    field.setCursorPosition(4);
    tab.delegate.frame().renderBody();
    const auto* next = qobject_cast<QLineEdit*>(tab.keyboard());
    ASSERT_TRUE(next && next != &field);
    EXPECT_EQ(next->text(), "half a name");
    EXPECT_EQ(next->cursorPosition(), 4);
}

} // namespace
