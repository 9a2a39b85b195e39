// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include "core/LocalTime.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextCursor>

namespace {

using namespace ostrel;

constexpr const char* snapshot
    = R"({"ts":"12:00:00","ram":{},"swap":{},"fan":{"mcp":7,"node":3},"accuracy":{"mcp":"<b>ps</b>"},
    "live_sessions":[{"rss":1536,"pid":"70","name":"claude","cmd":"claude <b>x</b>","cpu":2.5},
    {"rss":9,"pid":"71","name":"codex","cmd":"codex","cpu":0}],"verdict":{"per_sess":3.5},
    "launchd":{"interval_jobs":1,"runatload_interval":2,"keepalive":3,"shell_first":4}})";

TEST(SessionsTab, SaysWhereTheAgentsRunFromTheTopDown)
{
    OpenTab tab(OstrelMode::sessions, snapshot,
        { { "session_bridge", R"({"ok":true,"notes":["a server didn't answer"],"terminals":[
        {"title":"b","handle":"1","agentIdentity":"codex","executionHostId":"local","connected":true,
        "worktreePath":"/w"},{"title":"a <b>","handle":"2"}]})" } });
    tab.expectSaid({ "CONTINUE IN TERMINAL · ORCA", "Reading terminal metadata…",
        "live CLI processes · 2 · sorted by RAM" });
    tab.work();
    EXPECT_EQ(
        tab.expectSaid({ "CONTINUE IN TERMINAL · ORCA",
            QString::fromStdString("2 terminal tabs · read " + localShortTimeText(tab.time.now())),
            "a server didn't answer", "a <b>", "shell · unknown host · disconnected · ", "b",
            "codex · local · connected · /w", "live CLI processes · 2 · sorted by RAM",
            "Terminal tabs and operating-system processes are separate observations. Session stopping is ",
            "claude · pid 70 · 1.5 gb · 2% CPU", "codex · pid 71 · 9 mb · 0% CPU",
            "process counters · one collector snapshot · 0s ago", "mcp", "7", "node", "3", "PER SESSION",
            "≈ 3.5 mcp / session", "LAUNCHD", "interval 1 · RunAtLoad storm 2 · keepAlive 3",
            "background labels: 4 shell-first items still display as bash/zsh/env in macOS Settings" }),
        tab.said().size());
    EXPECT_EQ(tab.captions(),
        (QStringList { "automations & refresh limits", "refresh terminals", "open terminal (off)",
            "open terminal", "details", "details" }));
    for (const auto* label : all<ZOLShellLabel>(tab.page()))
        if (label->text() == "mcp") {
            EXPECT_EQ(label->parentWidget()->toolTip(), "<p>&lt;b&gt;ps&lt;/b&gt;</p>");
            EXPECT_EQ(label->parentWidget()->height(), 24);
        }
    EXPECT_EQ(tab.colors("interval 1 · RunAtLoad storm 2 · keepAlive 3"),
        std::vector { qColor(OstrelStyle::redBright.light) });
    tab.press("automations & refresh limits");
    EXPECT_EQ(tab.delegate.frame().mode(), OstrelMode::automations);
}

TEST(SessionsTab, PressesReachTheTerminalThePagesAndTheDetails)
{
    std::string rows;
    for (int n = 0; n < 13; ++n)
        rows += std::string(n ? "," : "") + R"({"name":"claude","rss":1,"pid":")" + std::to_string(n) + "\"}";
    OpenTab tab(OstrelMode::sessions, R"({"ts":"t","ram":{},"swap":{},"live_sessions":[)" + rows + "]}",
        { { "session_bridge",
            R"({"ok":true,"terminals":[{"title":"a","handle":"x y","connected":true}]})" } });
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

constexpr const char* ready
    = R"({"ok":true,"result":{"host":"mill","repoPath":"/r","taskChars":4,"effectiveCaps":
    {"cpu":"50%","memoryHigh":"1 GB","memoryMax":"2 GB"}}})";

struct OpenServer : OpenTab {
    OpenServer()
        : OpenTab(OstrelMode::server, snapshotText(0), { { "ostrel_remote", ready } })
    {
    }

    [[nodiscard]] QPlainTextEdit& task() { return named<QPlainTextEdit>("task"); }
    [[nodiscard]] bool startable() { return captions().contains("start on server"); }
    void preview()
    {
        press("preview task");
        work();
    }
};

TEST(ServerTab, SaysWhatItHasAndWhatIsToBeTyped)
{
    OpenServer tab;
    EXPECT_EQ(tab.said(),
        (QStringList { "Make room for the next task.",
            "Continue work in a new Codex task on your server. Include the goal, decisions and next step in "
            "the handoff below.",
            "profile: balanced · sets the cpu and memory caps of the next server task",
            "Connect a server to see its capacity.",
            "The local session stays open. Resource limits apply only to the new OSTREL job. Task text is "
            "held "
            "in memory; host and repository preferences stay on this Mac." }));
    EXPECT_EQ(tab.captions(),
        (QStringList {
            "check capacity", "eco", "balanced (on)", "fast", "preview task", "start on server (off)" }));
    EXPECT_TRUE(tab.texts().contains("server · on demand"));
    EXPECT_TRUE(tab.page().findChild<QLabel*>("server-profile"));
    EXPECT_EQ(tab.named("alias").accessibleName(), "SSH host alias");
    EXPECT_EQ(tab.named("repo").accessibleName(), "Remote repository path");
    EXPECT_EQ(tab.named("repo").height(), 30);
    EXPECT_EQ(tab.task().size(), QSize(728, 76));
    EXPECT_EQ(tab.task().accessibleName(), "Task handoff – goal, context, next step");
    tab.answers["ostrel_remote"]
        = R"({"ok":true,"result":{"cpuCount":8,"load1":1,"memory":{"availableMB":900}}})";
    tab.press("check capacity");
    EXPECT_TRUE(tab.texts().contains("server · working"));
    EXPECT_EQ(tab.captions(),
        (QStringList { "check capacity (off)", "eco (off)", "balanced (on) (off)", "fast (off)",
            "preview task (off)", "start on server (off)" }));
    EXPECT_FALSE(tab.task().isEnabled());
    tab.work();
    EXPECT_TRUE(tab.said().contains("CONNECTED · 8 cores · load 1.0 · available 900 mb"));
    tab.delegate.frame().switchMode(OstrelMode::overview);
    EXPECT_TRUE(tab.said().contains("server · connected"));
}

TEST(ServerTab, AnEditClosesTheStartAndTheFieldsKeepKeyboardCaretAndText)
{
    OpenServer tab;
    tab.task().setFocus();
    tab.task().setPlainText("goal\nnext");
    QTextCursor caret = tab.task().textCursor();
    caret.setPosition(3);
    tab.task().setTextCursor(caret);
    tab.preview();
    EXPECT_TRUE(tab.said().contains("READY · mill\nWorkspace: /r\nCPU: 50% of one core · memory: 1 GB soft / "
                                    "2 GB hard · 300s\nHandoff: 4 characters. Starts a new Codex task."));
    const auto* area = qobject_cast<QPlainTextEdit*>(tab.keyboard());
    ASSERT_TRUE(area) << "it was off meanwhile";
    EXPECT_EQ(area->toPlainText(), "goal\nnext");
    EXPECT_EQ(area->textCursor().position(), 3);
    EXPECT_TRUE(tab.startable()) << "coming back is no edit";
    tab.delegate.frame().renderBody();
    EXPECT_TRUE(tab.startable());
    for (const char* name : { "alias", "repo" }) {
        tab.preview();
        ASSERT_TRUE(tab.startable());
        auto& field = tab.named<QLineEdit>(name);
        field.setFocus();
        field.insert("x");
        EXPECT_EQ(&tab.named<QLineEdit>(name), &field) << "nothing was drawn";
        EXPECT_FALSE(tab.startable());
        tab.delegate.frame().renderBody();
        EXPECT_EQ(tab.named<QLineEdit>(name).text(), "x");
        EXPECT_EQ(tab.keyboard(), &tab.named(name));
    }
    const auto& server = tab.delegate.server().state();
    EXPECT_EQ(server.alias + server.repo + server.task, "xxgoal\nnext");
}

TEST(ServerTab, ATaskGoesOnWhileThePanelIsClosedAndItsEndIsThereAtTheNextOpening)
{
    OpenServer tab;
    tab.press("fast");
    EXPECT_TRUE(tab.captions().contains("fast (on)"));
    tab.preview();
    tab.answers["ostrel_remote"] = R"({"ok":true,"result":{"exitCode":3,"outputExcerpt":"l <b>1\nl 2"}})";
    tab.press("start on server");
    EXPECT_TRUE(tab.said().contains("Server task running · up to 5 minutes. You can close this panel."));
    tab.delegate.panel().close("x");
    tab.work();
    EXPECT_EQ(*tab.children.stops, 0);
    tab.delegate.panel().show();
    tab.settle();
    EXPECT_TRUE(tab.said().contains("Server task finished · exit 3\nl <b>1\nl 2"));
    EXPECT_FALSE(tab.startable());
}

} // namespace
