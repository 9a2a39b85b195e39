// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/ZOLShellLabel.h"

#include "support/QtEnvironment.h"

#include <QAccessible>
#include <QLineEdit>

#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

/// A tab of the janitor's, whose script answers by its subcommand, and says nothing to the others.
struct OpenJanitor : OpenTab {
    explicit OpenJanitor(OstrelMode mode, std::map<std::string, std::string> given = {})
        : OpenTab(OstrelMode::overview)
        , answers(std::move(given))
    {
        children.whileRunning = [this] {
            const auto found = answers.find(children.requests.back().arguments.at(1));
            if (found != answers.end())
                answer(found->second);
        };
        delegate.frame().switchMode(mode);
        work();
    }

    void work()
    {
        for (int turn = 0; turn < 4; ++turn)
            deliver();
        settle();
    }

    /// Presses the button of that name or identifier and lets all of it happen.
    void press(const char* name)
    {
        auto* identified = page().findChild<QAbstractButton*>(name);
        QAbstractButton* button = identified ? identified : this->button(name);
        ASSERT_TRUE(button) << name;
        button->click();
        work();
    }

    /// What the script was last asked with that subcommand.
    [[nodiscard]] std::string asked(const std::string& subcommand) const
    {
        std::string last;
        for (const platform::ChildRequest& request : children.requests)
            if (request.arguments.at(1) == subcommand) {
                last.clear();
                for (std::size_t at = 2; at < request.arguments.size(); ++at)
                    last += request.arguments[at] + " ";
            }
        return last;
    }

    /// The colour of the first label with that text.
    [[nodiscard]] QColor color(const QString& text)
    {
        for (const auto* label : all<ZOLShellLabel>(page()))
            if (label->text() == text)
                return label->palette().color(QPalette::WindowText);
        return {};
    }

    std::map<std::string, std::string> answers;
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
    const QStringList said = tab.said();
    EXPECT_EQ(said.mid(0, said.indexOf("verdict of the snapshot collector")),
        (QStringList { "findings", said.at(1), "CRITICAL", "swap", "much", "source: meminfo",
            "proposal: look", "WARNING", "servers", "2.0 gb · 2", "two", "source: ps", "proposal: stop",
            "INFO", "files", "7", "old", "source: ages", "proposal: review", "INFO", "disk", "fine",
            "source: df", "proposal: none", "cleanup and its receipts have their own tab" }))
        << said.join("\n").toStdString();
    EXPECT_TRUE(said.at(1).startsWith("4 findings · collected "));
    EXPECT_EQ(tab.color("CRITICAL"), qColor(OstrelStyle::red.light));
    EXPECT_EQ(tab.color("WARNING"), qColor(OstrelStyle::ink.light));
    EXPECT_EQ(tab.color("INFO"), qColor(OstrelStyle::muted.light));

    const std::tuple<const char*, int, OstrelMode> presses[] {
        { "open system", 220, OstrelMode::system },
        { "finding-c", 220, OstrelMode::cleanup },
        { "stop 2 processes…", 240, OstrelMode::diagnosis },
    };
    for (const auto& [name, width, mode] : presses) {
        tab.delegate.frame().switchMode(OstrelMode::diagnosis);
        auto* identified = tab.page().findChild<QAbstractButton*>(name);
        EXPECT_EQ((identified ? identified : tab.button(name))->width(), width);
        tab.press(name);
        EXPECT_EQ(tab.delegate.frame().mode(), mode) << name;
    }
    EXPECT_EQ(tab.asked("kill-preview"), "--pids=70,71 ");
    EXPECT_TRUE(tab.said().contains("nothing to stop: all 0 processes are protected"));
}

TEST(JanitorViews, EveryButtonOfTheCleanupListsItsOwnAndIsOffWhileFindingsAreRead)
{
    OpenJanitor tab(OstrelMode::cleanup,
        { { "groups", R"({"groups":["agents-light","agent-screenshots","app-caches"]})" } });
    tab.defaults.setTextArray("ostrel.cacheTargets", { "pip", "npm" });
    const std::tuple<const char*, QSize, const char*, const char*> presses[] {
        { "cleanup-agents-light", { 360, 44 }, "preview", "--group=agents-light " },
        { "cleanup-agents-deep", { 360, 44 }, "preview", "--group=agents-deep " },
        { "cleanup-mcp-light", { 360, 44 }, "mcp-preview", "--depth=light " },
        { "cleanup-mcp-deep", { 360, 44 }, "mcp-preview", "--depth=deep " },
        { "cleanup-group-agent-screenshots", { 110, 28 }, "preview", "--group=agent-screenshots " },
        { "cleanup-group-app-caches", { 110, 28 }, "preview", "--group=app-caches --select=pip,npm " },
    };
    for (const auto& [identifier, size, subcommand, arguments] : presses) {
        const auto* button = tab.page().findChild<QAbstractButton*>(identifier);
        ASSERT_TRUE(button) << identifier;
        EXPECT_EQ(button->size(), size) << identifier;
        tab.press(identifier);
        EXPECT_EQ(tab.asked(subcommand), arguments);
    }
    tab.press("open receipts");
    EXPECT_EQ(tab.workspace.opened.size(), 1U);

    tab.delegate.frame().switchMode(OstrelMode::diagnosis);
    tab.button("refresh findings")->click();
    tab.delegate.frame().switchMode(OstrelMode::cleanup);
    for (const auto& [identifier, size, subcommand, arguments] : presses) {
        const bool group = std::string_view(identifier).starts_with("cleanup-group-");
        EXPECT_EQ(tab.page().findChild<QAbstractButton*>(identifier)->isEnabled(), group) << identifier;
    }
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
    tab.press("cleanup-agents-deep");
    ASSERT_EQ(tab.alerts.asked.size(), 1U) << "cancelled at once";
    EXPECT_TRUE(tab.said().contains("deep · 500 files · 2.0 gb"));
    EXPECT_TRUE(tab.said().contains("cancelled · old"));
    int cut = 0;
    for (auto* label : all<ZOLShellLabel>(tab.page()))
        cut += label->isCut() ? 1 : 0;
    EXPECT_EQ(cut, 3) << "three files, a line each";
    tab.answers["preview"] = R"({"error":"no list of projects"})";
    tab.press("cleanup-group-product-builds");
    EXPECT_EQ(tab.color("no list of projects"), qColor(OstrelStyle::ink.light)) << "the last action";
    int red = 0;
    for (auto* label : all<ZOLShellLabel>(tab.page()))
        if (label->text() == "no list of projects"
            && label->palette().color(QPalette::WindowText) == qColor(OstrelStyle::red.light))
            ++red;
    EXPECT_EQ(red, 1) << "below the group";
}

TEST(JanitorViews, TheSettingsProtectAndUnprotectAndPickCaches)
{
    OpenJanitor tab(OstrelMode::settings,
        { { "caches", R"({"candidates":[{"name":"pip","size_mb":2048},{"name":"npm","size_mb":9}]})" } });
    auto& field = *tab.page().findChild<QLineEdit*>("protect-field");
    EXPECT_EQ(field.width(), 240);
    EXPECT_FALSE(tab.page().findChild<QWidget*>("unprotect-claude"));
    EXPECT_EQ(tab.color("claude · locked by rule 44"), qColor(OstrelStyle::muted.light));
    field.setText("  ");
    tab.press("protect this name");
    EXPECT_EQ(field.text(), "  ") << "blanks change nothing";
    field.setFocus();
    field.setText("Node");
    tab.press("protect this name");
    EXPECT_TRUE(tab.said().contains("node"));
    EXPECT_EQ(tab.page().findChild<QLineEdit*>("protect-field")->text(), "") << "ready for the next";

    tab.alerts.answers = { 0 };
    tab.press("unprotect-node");
    ASSERT_EQ(tab.alerts.asked.size(), 1U);
    EXPECT_EQ(tab.alerts.asked[0].title, "remove node from the protection list");
    EXPECT_FALSE(tab.said().contains("node"));

    tab.press("list the biggest caches");
    EXPECT_EQ(tab.color("pip · 2.0 gb"), qColor(OstrelStyle::muted.light));
    tab.press("cache-pip");
    EXPECT_EQ(tab.color("pip · 2.0 gb"), qColor(OstrelStyle::ink.light)) << "picked";
    EXPECT_EQ(dynamic_cast<OstrelButton&>(*tab.page().findChild<QAbstractButton*>("cache-pip")).caption(),
        "remove");
    EXPECT_EQ(tab.delegate.janitorTab().cacheTargets(), std::vector<std::string> { "pip" });
}

TEST(JanitorViews, TheKeyboardComesBackToWhatWasOffAndWhatIsTypedStays)
{
    OpenJanitor tab(OstrelMode::diagnosis);
    tab.button("refresh findings")->setFocus();
    tab.button("refresh findings")->click();
    tab.settle();
    EXPECT_EQ(tab.root().window()->focusWidget(), &tab.root()) << "what is off can't have it";
    tab.work();
    EXPECT_EQ(tab.root().window()->focusWidget(), tab.button("refresh findings"));

    tab.delegate.frame().switchMode(OstrelMode::settings);
    auto& field = *tab.page().findChild<QLineEdit*>("protect-field");
    field.setFocus();
    field.setText("half a name");
    field.setCursorPosition(4);
    tab.delegate.frame().renderBody();
    const auto* next = qobject_cast<QLineEdit*>(tab.root().window()->focusWidget());
    ASSERT_TRUE(next && next != &field);
    EXPECT_EQ(next->text(), "half a name");
    EXPECT_EQ(next->cursorPosition(), 4);
}

TEST(JanitorViews, NothingIsWiderThanTheTabWhateverItIsTold)
{
    const std::string word(4000, 'w');
    const auto text = [&](const char* key) { return "\"" + std::string(key) + "\":\"" + word + "\","; };
    const std::string finding = "{" + text("title") + text("seen") + text("source") + text("proposal")
        + text("level") + R"("action":{"kind":"open-tab","target":")" + word + R"("}})";
    const std::map<std::string, std::string> answers {
        { "findings", R"({"findings":[)" + finding + "]}" },
        { "groups", R"({"groups":[")" + word + R"("]})" },
        { "receipts", R"({"receipts":[{"kind":")" + word + R"("}]})" },
        { "preview", R"({"error":")" + word + R"("})" },
        { "caches", R"({"candidates":[{"name":")" + word + R"("}]})" },
    };
    const std::pair<OstrelMode, const char*> tabs[] { { OstrelMode::diagnosis, "refresh findings" },
        { OstrelMode::cleanup, "clean…" }, { OstrelMode::settings, "list the biggest caches" } };
    for (const auto& [mode, pressed] : tabs) {
        OpenJanitor tab(mode, answers);
        tab.press(pressed);
        EXPECT_EQ(tab.page().width(), 728);
        for (const QWidget* view : tab.page().findChildren<QWidget*>()) {
            const QRect place(view->mapTo(&tab.page(), QPoint()), view->size());
            EXPECT_TRUE(tab.page().rect().contains(place))
                << pressed << " " << view->accessibleName().left(40).toStdString() << place.left() << " "
                << place.right();
        }
    }
}

} // namespace
