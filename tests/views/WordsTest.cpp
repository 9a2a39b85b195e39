// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include "core/Version.h"

#include "support/QtEnvironment.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSet>
#include <QTextDocument>
#include <QTextDocumentFragment>

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

/// Every text that the panel shows, tells at the pointer, or gives to assistive technology.
QSet<QString> words(const QWidget& root)
{
    QSet<QString> all;
    for (const QWidget* view : root.findChildren<QWidget*>()) {
        // A long one is markup, so that the toolkit breaks its lines.
        const QString tip = view->toolTip();
        all << (Qt::mightBeRichText(tip) ? QTextDocumentFragment::fromHtml(tip).toPlainText() : tip)
            << view->accessibleName();
        if (const auto* label = qobject_cast<const QLabel*>(view))
            all << label->text();
        if (const auto* field = qobject_cast<const QLineEdit*>(view))
            all << field->placeholderText();
        if (const auto* area = qobject_cast<const QPlainTextEdit*>(view))
            all << area->placeholderText();
    }
    return all;
}

TEST(Words, EachTabSaysAndExplainsItselfInItsOwnWords)
{
    using enum OstrelMode;
    struct Case {
        OstrelMode mode;
        std::vector<std::string> words;
        std::function<void(OpenTab&)> before = {};
    };
    const auto help = [](OpenTab& tab) {
        QKeyEvent slash(QEvent::KeyPress, Qt::Key_Slash, Qt::NoModifier);
        QCoreApplication::sendEvent(&tab.root(), &slash);
    };
    const auto hide = [](OpenTab& tab) {
        tab.page().findChild<QAbstractButton*>("hidden")->click();
        tab.settle();
    };
    const auto terminal = [](OpenTab& tab) {
        tab.answer(R"({"ok":true,"terminals":[{}]})");
        tab.settleBackground();
        tab.settle();
    };
    const std::vector<Case> cases {
        { overview,
            { "local + server · a little more room to think", "OSTREL character",
                "OSTREL · click flashes the red core", "1–8 tabs · 9 settings · / keys · ⌥⌘m toggle",
                std::string(appVersion) + " · on this Mac · refreshes while open",
                "pressure, swap and cpu at a glance with the history · key 1",
                "memory, swap, load and the os pressure reading · key 2",
                "workloads by memory or cpu, agent and mcp processes · key 3",
                "agent sessions and what each one holds · key 4", "insights and the local analyst · key 5",
                "previews of what can be freed, each with a receipt · key 6",
                "every scheduler lane, its rhythm and its last result · key 7",
                "remote capacity and the tasks you send there · key 8" } },
        { overview,
            { "panel keys", "1    dashboard", "2    system", "3    processes", "4    agents", "5    insights",
                "6    cleanup", "7    automations", "8    server", "9    settings", "esc  close panel",
                "⌘w   close panel", "⌥⌘m  toggle panel", "/    this help", "esc or click to close" },
            help },
        { system,
            { "vm_stat + hw.memsize; native, used = active + wired + compressor",
                "sysctl vm.swapusage; native", "getloadavg + hw.ncpu; native\nnative · 5s tick" } },
        { sessions,
            { "Open this exact existing Orca terminal. No prompt is sent and no session is closed.",
                "Untitled terminal", "shell · unknown host · disconnected · ",
                "No live CLI processes in this snapshot." },
            terminal },
        { diagnosis,
            { "run the local CLI analyst over this snapshot; it suggests actions and stops nothing",
                "list MCP processes whose parent is gone; read-only, nothing is stopped",
                "show how much of the OSTREL history would be trimmed; nothing is deleted",
                "compact the OSTREL history after a confirmation" } },
        { cleanup,
            { "press a depth · the list opens · press again to act", "agents · files they leave behind",
                "light · logs, shell snapshots, paste cache and telemetry older than 14 days",
                "deep · the same older than 2 days, and MCP packages in ~/.npm/_npx no process loads",
                "session history (~/.codex/sessions, ~/.claude/projects) is never listed",
                "mcp · server processes", "light · MCP processes whose parent is gone",
                "deep · also MCP processes under agent sessions idle for 90 min; the sessions stay",
                "agent processes and protected names are refused, whatever the depth", "review old files",
                "review more files", "review orphan mcp", "review idle mcp",
                "light preview: inspect the exact list and volume before confirming any action",
                "deep preview: inspect the exact list and volume before confirming any action",
                "receipts · every action this app performed",
                "no action yet; a stop or a cleanup writes a line here" } },
        { automations, { "name / host" } },
        { server,
            { "SSH host alias", "Remote repository path", "Task handoff – goal, context, next step",
                "ask the alias over ssh for cores, load and free memory; read-only",
                "the cpu and memory caps of the next server task: eco",
                "the cpu and memory caps of the next server task: balanced",
                "the cpu and memory caps of the next server task: fast",
                "show what will run on the server, with the caps of the profile; nothing starts",
                "start the previewed task on the server; enabled after a preview" } },
        { settings,
            { "findings are read on a press, nothing runs on a timer; every stop and every cleanup writes a "
              "receipt",
                "protected processes · this app never stops these", "add a name to protect",
                "caches the cleanup group is allowed to empty",
                "none chosen; the group deletes nothing until a cache is picked", "list the biggest caches",
                "take the item out of the bar; asks first, ⌥⌘m stays the way back",
                "draw the bar item as mark", "draw the bar item as mark + value",
                "draw the bar item as value",
                "store hidden: the item leaves the bar, ⌥⌘m still opens the panel",
                "keep the mark in the bar and drop the hidden choice",
                "add or remove cpu in the value the bar draws",
                "add or remove mcp in the value the bar draws", "menu bar preview · mark · the mark alone",
                "the same switch as the circle in the header; stored as dev.quent.ostrel.pinned",
                "turn the panel white; stored as dev.quent.ostrel.theme",
                "turn the panel black; stored as dev.quent.ostrel.theme",
                "press the field, then the combination · esc cancels · delete clears",
                "store ⌥⌘M again, the shipped combination",
                "native readings every 3s, process details every 8s while open",
                "native readings every 5s, process details every 15s while open",
                "native readings every 10s, process details every 30s while open",
                "the character assembles on open and answers a click; macOS reduce motion still wins",
                "a hint card near the menu bar after 20s of os pressure, one per episode",
                "show a sample hint card now; it is not recorded as a real hint" },
            hide },
    };
    for (const Case& c : cases) {
        OpenTab tab(c.mode, R"({"ts":"12:00:00","ram":{},"swap":{}})");
        if (c.before)
            c.before(tab);
        const QSet<QString> said = words(tab.root());
        for (const std::string& text : c.words)
            EXPECT_TRUE(said.contains(QString::fromStdString(text)))
                << text << " in\n"
                << QStringList(said.values()).join("\n").toStdString();
    }
}

} // namespace
