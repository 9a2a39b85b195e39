// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include "core/Version.h"
#include "history/OstrelHistoryView.h"
#include "panel/GaugeView.h"
#include "panel/MetricCard.h"

#include "support/Rendering.h"

#include <QLineEdit>
#include <QPaintEvent>
#include <QPlainTextEdit>
#include <QRegion>
#include <QTextDocument>
#include <QTextDocumentFragment>

namespace {

using namespace ostrel;

/// What is painted while it lives, in the coordinates of a view.
class PaintWatch final : public QObject {
public:
    explicit PaintWatch(QWidget& view)
        : view_(view)
    {
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        auto* painted = qobject_cast<QWidget*>(object);
        if (event->type() == QEvent::Paint && painted && painted->window() == view_.window())
            region += static_cast<QPaintEvent*>(event)->region().translated(painted->mapTo(&view_, QPoint()));
        return false;
    }

    QRegion region;

private:
    QWidget& view_;
};

TEST(DashboardTab, SaysWhatItHasFromTheTopDown)
{
    OpenTab tab(OstrelMode::overview);
    EXPECT_EQ(tab.expectSaid({ "OS PRESSURE · NORMAL", "CPU", "0%", "4 cores", "MEMORY", "11.5 GB",
                  "74% of 16 GB", "SWAP", "1.5 gb", "38% allocated · retained", "AGENTS", "0",
                  "7 MCP processes", "collector snapshot · 0s ago", "AGENT BUDGET · ACCOUNT QUOTA",
                  "Quota not read yet · open automations to refresh",
                  "Claude quota · unavailable from connected sources",
                  "SCHEDULES   Mac 0   →   server 0   ·   cloud 0 unverified", "CPU ACTIVITY · 2 H",
                  "1 min shown · 0 restored + 1 this run · 1 min kept of 1440", "SWAP RESIDENCY · 2 H",
                  "1 min shown · 0 restored + 1 this run · 1 min kept of 1440", "server · not checked" }),
        tab.said().size());
}

TEST(DashboardTab, ItsFourCardsShareTheWidthToTheHalfPointAndAreSharpOnDenseScreens)
{
    OpenTab tab(OstrelMode::overview);
    const std::vector<MetricCard*> cards = all<MetricCard>(tab.page());
    ASSERT_EQ(cards.size(), 4U);
    for (std::size_t at = 0; at < cards.size(); ++at) {
        EXPECT_EQ(cards[at]->plate(), QRectF(184.5 * double(at), 0, 174.5, 104));
        for (const QLabel* label : cards[at]->findChildren<QLabel*>())
            EXPECT_GE(label->x() + cards[at]->x(), cards[at]->plate().left() + 12) << at;
    }
    QWidget& row = *cards[0]->parentWidget();
    const QImage picture = rendered(row, 2);
    for (const int edge : { 369, 738, 1107 }) {
        EXPECT_TRUE(near(picture.pixel(edge, 104), OstrelStyle::fill.light)) << edge;
        EXPECT_TRUE(near(picture.pixel(edge - 1, 104), OstrelStyle::bg.light)) << edge;
        EXPECT_TRUE(near(picture.pixel(edge - 20, 104), OstrelStyle::bg.light)) << edge;
        EXPECT_TRUE(near(picture.pixel(edge - 21, 104), OstrelStyle::fill.light)) << edge;
    }
}

TEST(DashboardTab, EveryButtonSaysWhereItLeadsAndLeadsThere)
{
    using enum OstrelMode;
    const std::tuple<const char*, OstrelMode, QSize, const char*> doors[] {
        { "workloads", processes, { 112, 28 }, "open the workloads tab: the processes behind the pressure" },
        { "server", server, { 96, 28 }, "open the server tab: remote capacity and the tasks you send there" },
        { "agents & terminals", sessions, { 360, 44 }, "agent sessions and what each one holds" },
        { "inspect / stop a process", processes, { 360, 44 },
            "workloads by memory or cpu, agent and mcp processes" },
        { "review cleanup", cleanup, { 360, 44 }, "previews of what can be freed, each with a receipt" },
        { "continue on server", server, { 360, 44 }, "remote capacity and the tasks you send there" },
        { "automations & refresh limits", automations, { 252, 28 },
            "open the automations tab: every scheduler lane, its rhythm and its last result" },
        { "refresh", overview, { 76, 28 }, "read the process snapshot again" },
        { "open server", server, { 108, 28 }, "open the server tab" },
    };
    OpenTab tab(overview);
    std::vector<OstrelButton*> inOrder = all<OstrelButton>(tab.page());
    ASSERT_EQ(inOrder.size(), std::size(doors));
    const QWidget* focused = nullptr;
    for (std::size_t at = 0; at < inOrder.size(); ++at) {
        const auto& [name, mode, size, toolTip] = doors[at];
        const OstrelButton& button = *inOrder[at];
        EXPECT_EQ(button.accessibleName(), name);
        EXPECT_EQ(QAccessible::queryAccessibleInterface(inOrder[at])->role(), QAccessible::Button) << name;
        EXPECT_EQ(button.size(), size) << name;
        EXPECT_EQ(button.toolTip(), toolTip);
        // The keyboard comes to them in the order in which they are read.
        const QWidget* next = focused ? focused->nextInFocusChain() : &button;
        while (next->focusPolicy() == Qt::NoFocus)
            next = next->nextInFocusChain();
        EXPECT_EQ(next, &button) << name;
        focused = &button;
    }
    for (const auto& [name, mode, size, toolTip] : doors) {
        tab.delegate.frame().switchMode(overview);
        const auto runs = tab.children.requests.size();
        tab.control(name)->click();
        EXPECT_EQ(tab.delegate.frame().mode(), mode) << name;
        tab.deliver();
        // The first look at a tab reads what it shows: the terminals; findings, receipts, groups.
        const std::size_t readings = mode == cleanup ? 3 : mode == overview || mode == sessions ? 1 : 0;
        EXPECT_EQ(tab.children.requests.size() - runs, readings) << name;
    }
}

TEST(DashboardTab, ATickWritesItsLabelsWithoutARebuildAndPaintsNothingElse)
{
    OpenTab tab(OstrelMode::overview);
    tab.tick(10);
    tab.settle();
    const QWidget* page = &tab.page();
    tab.kernel.reading.usedBytes = 8192 * OpenTab::mb;
    tab.kernel.reading.swapUsedBytes = 100 * OpenTab::mb;
    PaintWatch watch(tab.root());
    tab.tick(30);
    QCoreApplication::processEvents();
    EXPECT_EQ(&tab.page(), page);
    QRegion live;
    // What is scrolled out of sight isn't painted.
    const auto add = [&](const QWidget& view) {
        live += view.visibleRegion().translated(view.mapTo(&tab.root(), QPoint()));
    };
    for (const char* text : { "30%", "8.0 GB", "52% of 16 GB", "100 mb", "2% allocated · retained",
             "collector snapshot · 10s ago",
             "now: cpu 30% · swap 2% · load 2.5   |   collector (10s ago): 7 mcp / 0 sess · ok" }) {
        EXPECT_TRUE(tab.texts().contains(text)) << text << " in " << tab.texts().join("\n").toStdString();
        for (const QLabel* label : tab.root().findChildren<QLabel*>())
            if (label->text() == text)
                add(*label);
    }
    for (const OstrelHistoryView* graph : all<OstrelHistoryView>(tab.page()))
        add(*graph);
    EXPECT_EQ(watch.region - live, QRegion()) << "beyond what changed";
    EXPECT_EQ(watch.region.boundingRect(), live.boundingRect()) << "what changed";
}

TEST(DashboardTab, PressureIsRedWhileItAlarms)
{
    OpenTab tab(OstrelMode::overview);
    for (const auto& [level, text, color] : { std::tuple { 1, "OS PRESSURE · NORMAL", OstrelStyle::ink },
             { 2, "OS PRESSURE · WARNING", OstrelStyle::red },
             { 0, "OS PRESSURE · UNKNOWN", OstrelStyle::ink } }) {
        tab.kernel.reading.pressureLevel = level;
        tab.delegate.tick().tickNative();
        tab.delegate.frame().renderBody();
        const QLabel& label = *tab.page().findChildren<QLabel*>().first();
        EXPECT_EQ(label.text(), text);
        EXPECT_EQ(label.palette().color(QPalette::WindowText), qColor(color.light)) << text;
    }
}

/// Every text that the panel shows, tells at the pointer, or gives to assistive technology.
QStringList wordsOf(const QWidget& root)
{
    QStringList all;
    for (const QWidget* view : root.findChildren<QWidget*>()) {
        // A long one is markup, so that the toolkit breaks its lines.
        const QString tip = view->toolTip();
        all << (Qt::mightBeRichText(tip) ? QTextDocumentFragment::fromHtml(tip).toPlainText() : tip)
            << view->accessibleName() << view->property("text").toString()
            << view->property("placeholderText").toString();
    }
    return all;
}

TEST(Tabs, ExplainWhatAPressDoesAndWhatIsSafe)
{
    using enum OstrelMode;
    const std::pair<OstrelMode, std::vector<std::string>> cases[] {
        { overview,
            { "local + server · a little more room to think", "OSTREL character",
                "OSTREL · click flashes the red core", "1–8 tabs · 9 settings · / keys · ⌥⌘m toggle",
                std::string(appVersion) + " · on this Mac · refreshes while open" } },
        { system, { "getloadavg + hw.ncpu; native\nnative · 5s tick" } },
        { sessions,
            { "Open this exact existing Orca terminal. No prompt is sent and no session is closed.",
                "Untitled terminal", "No live CLI processes in this snapshot." } },
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
                "light preview: inspect the exact list and volume before confirming any action" } },
        { automations, { "name / host" } },
        { server,
            { "ask the alias over ssh for cores, load and free memory; read-only",
                "the cpu and memory caps of the next server task: fast",
                "show what will run on the server, with the caps of the profile; nothing starts",
                "start the previewed task on the server; enabled after a preview" } },
        { settings,
            { "findings are read on a press, nothing runs on a timer; every stop and every cleanup writes a "
              "receipt",
                "add a name to protect", "none chosen; the group deletes nothing until a cache is picked",
                "take the item out of the bar; asks first, ⌥⌘m stays the way back",
                "store hidden: the item leaves the bar, ⌥⌘m still opens the panel",
                "keep the mark in the bar and drop the hidden choice",
                "the same switch as the circle in the header; stored as dev.quent.ostrel.pinned",
                "press the field, then the combination · esc cancels · delete clears",
                "show a sample hint card now; it is not recorded as a real hint" } },
    };
    for (const auto& [mode, texts] : cases) {
        OpenTab tab(mode, R"({"ts":"12:00:00","ram":{},"swap":{}})",
            { { "session_bridge", R"({"ok":true,"terminals":[{}]})" } });
        tab.work();
        if (mode == settings)
            tab.press("hidden");
        const QStringList said = wordsOf(tab.root());
        for (const std::string& text : texts)
            EXPECT_TRUE(said.contains(QString::fromStdString(text))) << text << " in\n"
                                                                     << said.join("\n").toStdString();
    }
}

TEST(Tabs, NothingIsWiderThanTheTabWhateverItIsTold)
{
    using enum OstrelMode;
    struct Case {
        OstrelMode mode;
        const char* snapshot; ///< behind its first keys
        OpenTab::Answers answers;
        const char* press; ///< empty for none
    };
    // Each W stands for a long word.
    const Case cases[] {
        { system, R"("fan":{"chromium":3,"chromium_bundles":{"W":3}},"history_state":"W","accuracy":
            {"chromium":"W; all"},"system_observation":{"network":[{"interface":"W"}]})",
            {}, "" },
        { diagnosis, R"("verdict":{"cause":"W <b>&amp;</b>"},"offenders":[{"label":"W"}])",
            { { "findings", R"({"findings":[{"title":"W","seen":"W","source":"W","proposal":"W","level":"W",
                "action":{"kind":"open-tab","target":"W"}}]})" },
                { "analyze", R"([{"label":"W","kind":"k"}])" } },
            "▶ run local analyst" },
        { cleanup, R"("fan":{})",
            { { "groups", R"({"groups":["W"]})" }, { "receipts", R"({"receipts":[{"kind":"W"}]})" },
                { "preview", R"({"error":"W"})" } },
            "clean…" },
        { processes, R"("procs":[{"rss":1,"pid":"1","name":"W","grp":"W","cmd":"W","cpu":1}])", {}, "" },
        { settings, R"("fan":{})", { { "caches", R"({"candidates":[{"name":"W"}]})" } },
            "list the biggest caches" },
        { sessions,
            R"("fan":{"W":1},"chromium_bundles":{"W":1},"live_sessions":[{"rss":1,"pid":"1","name":"W"}])",
            { { "session_bridge", R"({"ok":true,"notes":["W"],"terminals":[{"connected":true,"title":"W",
                "worktreePath":"W"}]})" } },
            "" },
        { sessions, R"("fan":{})", { { "session_bridge", R"({"ok":false,"error":"W"})" } },
            "terminals-refresh" },
        { server, R"("fan":{})", { { "ostrel_remote", R"({"error":{"message":"W"}})" } }, "preview task" },
        { server, R"("fan":{})",
            { { "ostrel_remote", R"({"ok":true,"result":{"host":"W","repoPath":"W"}})" } }, "preview task" },
    };
    const QString word(5000, 'w');
    const auto told = [&](const std::string& text) {
        return QString::fromStdString(text).replace('W', word).toStdString();
    };
    for (const auto& [mode, snapshot, answers, press] : cases) {
        SCOPED_TRACE(testing::Message() << words(mode).title << " " << snapshot);
        OpenTab::Answers spoken;
        for (const auto& [key, text] : answers)
            spoken[key] = told(text);
        OpenTab tab(mode, told(R"({"ts":"t","ram":{},"swap":{},)" + std::string(snapshot) + "}"), spoken);
        tab.work();
        if (mode == server) {
            tab.named<QLineEdit>("alias").setText(word);
            tab.named<QPlainTextEdit>("task").setPlainText(word);
        }
        if (*press) {
            tab.press(press);
            tab.work();
        }
        EXPECT_FALSE(tab.said().filter("www").isEmpty()) << "it was told";
        tab.expectWithinTheTab();
        for (const QLabel* label : tab.root().findChildren<QLabel*>())
            EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText)
                << label->text().left(40).toStdString();
    }
}

TEST(SystemTab, WhatIsCutIsToldInATooltipWithoutMarkup)
{
    const std::string word(300, 'w');
    OpenTab tab(OstrelMode::system,
        R"({"ts":"12:00:00","ram":{},"swap":{},"fan":{"chromium":3,"chromium_bundles":{")" + word
            + R"(":3}},"accuracy":{"chromium":"<b>ps</b> )" + word + R"(; all"},"history_state":")" + word
            + R"(","system_observation":{"network":[{"interface":")" + word + R"("}]}})");
    int cut = 0;
    for (auto* label : all<ZOLShellLabel>(tab.page()))
        if (label->isCut()) {
            ++cut;
            EXPECT_TRUE(label->toolTip().isEmpty() || label->toolTip().contains("&lt;b&gt;ps&lt;/b&gt;"))
                << "its own tooltip is the whole text: " << label->toolTip().toStdString();
        }
    EXPECT_EQ(cut, 4);
}

TEST(SystemTab, ARebuiltTabsGaugesGoOnFromWhereTheLastOnesStood)
{
    OpenTab tab(OstrelMode::system);
    const auto values = [&tab] {
        std::vector<std::pair<std::string, double>> shown;
        for (const GaugeView* gauge : all<GaugeView>(tab.page()))
            shown.emplace_back(gauge->caption(), gauge->displayedPct());
        return shown;
    };
    using Values = std::vector<std::pair<std::string, double>>;
    EXPECT_EQ(values(), (Values { { "cpu", 0 }, { "memory", 74 }, { "swap", 38 } }));
    tab.delegate.frame().switchMode(OstrelMode::settings);
    tab.workspace.setReduceMotion(false);
    tab.tick(80);
    tab.delegate.frame().switchMode(OstrelMode::system);
    EXPECT_EQ(values().front().second, 80) << "kept up to date while no gauge showed it";
    tab.delegate.panel().close("x");
    tab.tick(20);
    tab.delegate.panel().show();
    EXPECT_EQ(values().front().second, 80) << "it sets out from what was seen last";
    tab.time.advance(platform::Seconds(0.5));
    EXPECT_EQ(values().front().second, 20);
}

TEST(SystemTab, StandsInItsOrderAndTheTickWritesTheFreeMemory)
{
    OpenTab tab(OstrelMode::system);
    tab.expectInOrder({ "this Mac · power, storage & network", "Test OS 1", "2.0 hours", "unknown",
        "unavailable", "network counters", "cpu load · 1 samples at 5s · this run",
        "src: host_cpu tick delta, native · live", "system · every row names its source",
        "2.50 · 62% of 4 cores", "2.0 gb free", "11.5 gb of 16 gb · 74%", "menu bar", "cpu · swap · ",
        "saved history · local", "dashboard history · local · 24 h", "1 of 1440", "MEASUREMENT MODEL" });
    const QWidget* page = &tab.page();
    tab.kernel.reading.freeBytes = 499 * OpenTab::mb;
    tab.tick(10);
    EXPECT_EQ(&tab.page(), page);
    EXPECT_TRUE(tab.said().contains("499 mb free"));
}

} // namespace
