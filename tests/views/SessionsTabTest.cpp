// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include "core/LocalTime.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/ZOLShellLabel.h"

#include "support/QtEnvironment.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextCursor>

#include <map>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

/// A tab whose scripts answer by their names, and otherwise with silence.
struct OpenScripted : OpenTab {
    explicit OpenScripted(OstrelMode mode, const std::string& snapshot = snapshotText(0))
        : OpenTab(OstrelMode::overview, snapshot)
    {
        for (const char* name : { "session_bridge", "ostrel_remote" })
            bundle.resources.emplace(std::string("collectors/") + name + ".py", name);
        children.whileRunning = [this] {
            const auto found = answers.find(children.requests.back().arguments.at(0));
            if (found != answers.end())
                answer(found->second);
        };
        delegate.frame().switchMode(mode);
        settle();
    }

    /// Lets all that runs come to its end.
    void work()
    {
        settleBackground();
        settle();
    }

    /// The control of that kind, name and place on screen.
    template <typename View>
    [[nodiscard]] View& named(const char* identifier)
    {
        return *page().findChild<View*>(identifier);
    }
    void press(const char* name)
    {
        auto* found = page().findChild<QAbstractButton*>(name);
        (found ? found : button(name))->click();
        settle();
    }

    /// The captions on the tab, those off with a mark.
    [[nodiscard]] QStringList captions()
    {
        QStringList all;
        for (const OstrelButton* button : ::all<OstrelButton>(page()))
            all.push_back(button->caption() + (button->isActive() ? " (on)" : "")
                + (button->isEnabled() ? "" : " (off)"));
        return all;
    }
    /// What the tab says, from one text on.
    [[nodiscard]] QStringList from(const QString& first)
    {
        const QStringList all = said();
        return all.mid(std::max<qsizetype>(0, all.indexOf(first)));
    }
    void expectWithinTheTab()
    {
        EXPECT_EQ(page().width(), 728);
        for (const QWidget* view : page().findChildren<QWidget*>()) {
            const QRect place(view->mapTo(&page(), QPoint()), view->size());
            EXPECT_TRUE(place.isEmpty() || page().rect().contains(place))
                << view->accessibleName().left(40).toStdString() << place.left() << " " << place.right();
        }
    }

    std::map<std::string, std::string> answers;
};

constexpr const char* note
    = "Terminal tabs and operating-system processes are separate observations. Session "
      "stopping is protected by your current policy.";
constexpr const char* labels
    = "background labels: 4 shell-first items still display as bash/zsh/env in macOS "
      "Settings until their plist is migrated/reloaded.";

constexpr const char* snapshot
    = R"({"ts":"12:00:00","ram":{},"swap":{},"fan":{"mcp":7,"node":3},"accuracy":{"mcp":"<b>ps</b>"},
    "live_sessions":[{"rss":1536,"pid":"70","name":"claude","cmd":"claude <b>x</b>","cpu":2.5},
    {"rss":9,"pid":"71","name":"codex","cmd":"codex","cpu":0}],"verdict":{"per_sess":3.5},
    "launchd":{"interval_jobs":1,"runatload_interval":2,"keepalive":3,"shell_first":4}})";

TEST(SessionsTab, SaysWhereTheAgentsRunFromTheTopDown)
{
    OpenScripted tab(OstrelMode::sessions, snapshot);
    EXPECT_EQ(tab.from("CONTINUE IN TERMINAL · ORCA").mid(0, 3),
        (QStringList { "CONTINUE IN TERMINAL · ORCA", "Reading terminal metadata…",
            "live CLI processes · 2 · sorted by RAM" }));
    tab.answers["session_bridge"] = R"({"ok":true,"notes":["a server didn't answer"],"terminals":[
        {"title":"b","handle":"1","agentIdentity":"codex","executionHostId":"local","connected":true,
        "worktreePath":"/w"},{"title":"a <b>","handle":"2"}]})";
    tab.work();
    const QString read
        = QString::fromStdString("2 terminal tabs · read " + localShortTimeText(tab.time.now()));
    EXPECT_EQ(tab.from("CONTINUE IN TERMINAL · ORCA"),
        (QStringList { "CONTINUE IN TERMINAL · ORCA", read, "a server didn't answer", "a <b>",
            "shell · unknown host · disconnected · ", "b", "codex · local · connected · /w",
            "live CLI processes · 2 · sorted by RAM", note, "claude · pid 70 · 1.5 gb · 2% CPU",
            "codex · pid 71 · 9 mb · 0% CPU", "process counters · one collector snapshot · 0s ago", "mcp",
            "7", "node", "3", "PER SESSION", "≈ 3.5 mcp / session", "LAUNCHD",
            "interval 1 · RunAtLoad storm 2 · keepAlive 3", labels }))
        << tab.said().join("\n").toStdString();
    EXPECT_EQ(tab.captions(),
        (QStringList { "automations & refresh limits", "refresh terminals", "open terminal (off)",
            "open terminal", "details", "details" }));
    for (const auto* label : all<ZOLShellLabel>(tab.page())) {
        if (label->text() == "mcp") {
            EXPECT_EQ(label->parentWidget()->toolTip(), "<p>&lt;b&gt;ps&lt;/b&gt;</p>");
            EXPECT_EQ(label->parentWidget()->height(), 24);
        }
        if (label->text().startsWith("interval")) {
            EXPECT_EQ(label->palette().color(QPalette::WindowText), qColor(OstrelStyle::redBright.light));
        }
    }
    tab.press("automations & refresh limits");
    EXPECT_EQ(tab.delegate.frame().mode(), OstrelMode::automations);
}

TEST(SessionsTab, PressesReachTheTerminalThePagesAndTheDetails)
{
    std::string rows;
    for (int n = 0; n < 13; ++n)
        rows += std::string(n ? "," : "") + R"({"name":"claude","rss":1,"pid":")" + std::to_string(n) + "\"}";
    OpenScripted tab(OstrelMode::sessions, R"({"ts":"t","ram":{},"swap":{},"live_sessions":[)" + rows + "]}");
    tab.answers["session_bridge"]
        = R"({"ok":true,"terminals":[{"title":"a","handle":"x y","connected":true}]})";
    tab.work();
    EXPECT_FALSE(tab.said().contains("PER SESSION")) << "nothing was counted";
    tab.press("processes-next");
    EXPECT_TRUE(tab.said().contains("page 2 / 2"));
    tab.answers["session_bridge"] = R"({"message":"Brought to the front: a."})";
    tab.press("terminal-x y");
    EXPECT_EQ(tab.captions().mid(1, 2), (QStringList { "reading… (off)", "open terminal (off)" }));
    tab.work();
    EXPECT_TRUE(tab.said().contains("Brought to the front: a."));
    EXPECT_EQ(tab.children.requests.back().arguments,
        (std::vector<std::string> { "session_bridge", "switch", "--handle", "x y", "--confirm" }));
    tab.alerts.answers = { 1 };
    tab.press("details-12");
    EXPECT_EQ(tab.alerts.asked.at(0).title, "claude · pid 12");
    EXPECT_EQ(tab.pasteboard.copied, std::vector<std::string> { tab.alerts.asked.at(0).text });
}

TEST(SessionsTab, NothingIsWiderThanTheTabWhateverItIsTold)
{
    const std::string word(5000, 'w');
    OpenScripted tab(OstrelMode::sessions,
        R"({"ts":"t","ram":{},"swap":{},"fan":{")" + word + R"(":1},"chromium_bundles":{")" + word
            + R"(":1},"live_sessions":[{"rss":1,"pid":"1","name":")" + word + R"("}]})");
    tab.answers["session_bridge"] = R"({"ok":true,"notes":[")" + word
        + R"("],"terminals":[{"connected":true,"title":")" + word + R"(","worktreePath":")" + word
        + R"("}]})";
    tab.work();
    tab.expectWithinTheTab();
    EXPECT_EQ(tab.captions().mid(2), (QStringList { "open terminal", "details" }));
    tab.answers["session_bridge"] = R"({"ok":false,"error":")" + word + R"("})";
    tab.press("terminals-refresh");
    tab.work();
    tab.expectWithinTheTab();
}

constexpr const char* ready
    = R"({"ok":true,"result":{"host":"mill","repoPath":"/r","taskChars":4,"effectiveCaps":
    {"cpu":"50%","memoryHigh":"1 GB","memoryMax":"2 GB"}}})";
constexpr const char* readyText
    = "READY · mill\nWorkspace: /r\nCPU: 50% of one core · memory: 1 GB soft / 2 GB hard "
      "· 300s\nHandoff: 4 characters. Starts a new Codex task.";

TEST(ServerTab, SaysWhatItHasAndWhatIsToBeTyped)
{
    OpenScripted tab(OstrelMode::server);
    const QStringList expected { "Make room for the next task.",
        "Continue work in a new Codex task on your server. Include the goal, decisions and next step in the "
        "handoff below.",
        "profile: balanced · sets the cpu and memory caps of the next server task",
        "Connect a server to see its capacity.",
        "The local session stays open. Resource limits apply only to the new OSTREL job. Task text is held "
        "in "
        "memory; host and repository preferences stay on this Mac." };
    EXPECT_EQ(tab.said(), expected);
    EXPECT_EQ(tab.captions(),
        (QStringList {
            "check capacity", "eco", "balanced (on)", "fast", "preview task", "start on server (off)" }));
    EXPECT_TRUE(tab.texts().contains("server · on demand"));
    EXPECT_TRUE(tab.page().findChild<QLabel*>("server-profile"));
    EXPECT_EQ(tab.named<QLineEdit>("alias").accessibleName(), "SSH host alias");
    EXPECT_EQ(tab.named<QLineEdit>("repo").height(), 30);
    EXPECT_EQ(tab.named<QPlainTextEdit>("task").size(), QSize(728, 76));
    EXPECT_EQ(tab.named<QPlainTextEdit>("task").accessibleName(), "Task handoff – goal, context, next step");
    tab.answers["ostrel_remote"]
        = R"({"ok":true,"result":{"cpuCount":8,"load1":1,"memory":{"availableMB":900}}})";
    tab.press("check capacity");
    EXPECT_TRUE(tab.texts().contains("server · working"));
    EXPECT_EQ(tab.captions(),
        (QStringList { "check capacity (off)", "eco (off)", "balanced (on) (off)", "fast (off)",
            "preview task (off)", "start on server (off)" }));
    EXPECT_FALSE(tab.named<QPlainTextEdit>("task").isEnabled());
    tab.work();
    EXPECT_TRUE(tab.said().contains("CONNECTED · 8 cores · load 1.0 · available 900 mb"));
    tab.delegate.frame().switchMode(OstrelMode::overview);
    EXPECT_TRUE(tab.said().contains("server · connected"));
}

TEST(ServerTab, AnEditClosesTheStartAndTheFieldsKeepKeyboardCaretAndText)
{
    OpenScripted tab(OstrelMode::server);
    auto* area = &tab.named<QPlainTextEdit>("task");
    area->setFocus();
    area->setPlainText("goal\nnext");
    QTextCursor caret = area->textCursor();
    caret.setPosition(3);
    area->setTextCursor(caret);
    tab.answers["ostrel_remote"] = ready;
    tab.press("preview task");
    tab.work();
    EXPECT_TRUE(tab.said().contains(readyText));
    area = qobject_cast<QPlainTextEdit*>(tab.root().window()->focusWidget());
    ASSERT_TRUE(area) << "it was off meanwhile";
    EXPECT_EQ(area->toPlainText(), "goal\nnext");
    EXPECT_EQ(area->textCursor().position(), 3);
    EXPECT_TRUE(tab.captions().contains("start on server")) << "coming back is no edit";
    tab.delegate.frame().renderBody();
    EXPECT_TRUE(tab.captions().contains("start on server"));
    for (const char* name : { "alias", "repo" }) {
        tab.press("preview task");
        tab.work();
        ASSERT_TRUE(tab.named<OstrelButton>("start-server").isEnabled());
        auto& field = tab.named<QLineEdit>(name);
        field.setFocus();
        field.insert("x");
        EXPECT_EQ(&tab.named<QLineEdit>(name), &field) << "nothing was drawn";
        EXPECT_FALSE(tab.named<OstrelButton>("start-server").isEnabled());
        tab.delegate.frame().renderBody();
        EXPECT_EQ(tab.named<QLineEdit>(name).text(), "x");
        EXPECT_EQ(tab.root().window()->focusWidget(), &tab.named<QLineEdit>(name));
    }
    const auto& server = tab.delegate.server().state();
    EXPECT_EQ(server.alias + server.repo + server.task, "xxgoal\nnext");
}

TEST(ServerTab, ATaskGoesOnWhileThePanelIsClosedAndItsEndIsThereAtTheNextOpening)
{
    OpenScripted tab(OstrelMode::server);
    tab.answers["ostrel_remote"] = ready;
    tab.press("fast");
    EXPECT_TRUE(tab.captions().contains("fast (on)"));
    tab.press("preview task");
    tab.work();
    tab.answers["ostrel_remote"] = R"({"ok":true,"result":{"exitCode":3,"outputExcerpt":"l <b>1\nl 2"}})";
    tab.press("start on server");
    EXPECT_TRUE(tab.said().contains("Server task running · up to 5 minutes. You can close this panel."));
    tab.delegate.panel().close("x");
    tab.work();
    EXPECT_EQ(*tab.children.stops, 0);
    tab.delegate.panel().show();
    tab.settle();
    EXPECT_TRUE(tab.said().contains("Server task finished · exit 3\nl <b>1\nl 2"));
    EXPECT_TRUE(tab.captions().contains("start on server (off)"));
}

TEST(ServerTab, NothingIsWiderThanTheTabWhateverItIsTold)
{
    const std::string word(20000, 'w');
    OpenScripted tab(OstrelMode::server);
    tab.named<QLineEdit>("alias").setText(QString::fromStdString(word));
    tab.named<QPlainTextEdit>("task").setPlainText(QString::fromStdString(word));
    for (const std::string& result : { R"({"error":{"message":")" + word + R"("}})",
             R"({"ok":true,"result":{"host":")" + word + R"(","repoPath":")" + word + R"("}})" }) {
        tab.answers["ostrel_remote"] = result;
        tab.press("preview task");
        tab.work();
        tab.expectWithinTheTab();
    }
}

} // namespace
