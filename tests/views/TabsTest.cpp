// SPDX-License-Identifier: Apache-2.0
#include "views/OpenTab.h"

#include "design/OstrelStyle.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/ZOLShellLabel.h"
#include "history/OstrelHistoryView.h"
#include "panel/GaugeView.h"
#include "panel/MetricCard.h"

#include "support/QtEnvironment.h"
#include "support/Rendering.h"

#include <QAccessible>
#include <QEvent>
#include <QHelpEvent>
#include <QPaintEvent>
#include <QRegion>
#include <QScrollArea>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

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
    EXPECT_EQ(tab.said(),
        (QStringList { "OS PRESSURE · NORMAL", "CPU", "0%", "4 cores", "MEMORY", "11.5 GB", "74% of 16 GB",
            "SWAP", "1.5 gb", "38% allocated · retained", "AGENTS", "0", "7 MCP processes",
            "collector snapshot · 0s ago", "AGENT BUDGET · ACCOUNT QUOTA",
            "Quota not read yet · open automations to refresh",
            "Claude quota · unavailable from connected sources",
            "SCHEDULES   Mac 0   →   server 0   ·   cloud 0 unverified", "CPU ACTIVITY · 2 H",
            "1 min shown · 0 restored + 1 this run · 1 min kept of 1440", "SWAP RESIDENCY · 2 H",
            "1 min shown · 0 restored + 1 this run · 1 min kept of 1440", "server · not checked" }))
        << tab.said().join("\n").toStdString();
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
        for (OstrelButton* button : all<OstrelButton>(tab.page()))
            if (button->accessibleName() == name) {
                button->click();
                break;
            }
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

/// A snapshot in which much is longer than the tab is wide.
std::string longSnapshot()
{
    const std::string word(300, 'w');
    return R"({"ts":"12:00:00","ram":{},"swap":{},"fan":{"mcp":7,"chromium":3,"chromium_bundles":{")" + word
        + R"(":3}},"accuracy":{"chromium":"<b>ps</b> )" + word + R"(; all"},"history_state":")" + word
        + R"(","system_observation":{"network":[{"interface":")" + word + R"("}]}})";
}

TEST(SystemTab, NothingIsWiderThanTheTabAndWhatIsCutIsToldInATooltip)
{
    OpenTab tab(OstrelMode::system, longSnapshot());
    EXPECT_EQ(tab.page().width(), 728);
    int cut = 0;
    for (auto* label : all<ZOLShellLabel>(tab.page())) {
        const QRect place(label->mapTo(&tab.page(), QPoint()), label->size());
        EXPECT_TRUE(tab.page().rect().contains(place)) << label->text().toStdString();
        if (!label->isCut())
            continue;
        ++cut;
        EXPECT_TRUE(label->toolTip().isEmpty() || label->toolTip().contains("&lt;b&gt;ps&lt;/b&gt;"))
            << "its own tooltip is the whole text; another one shows no markup: "
            << label->toolTip().toStdString();
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
    const QStringList said = tab.said();
    qsizetype last = -1;
    for (const char* text :
        { "this Mac · power, storage & network", "Test OS 1", "2.0 hours", "unknown", "unavailable",
            "network counters", "cpu load · 1 samples at 5s · this run",
            "src: host_cpu tick delta, native · live", "system · every row names its source",
            "2.50 · 62% of 4 cores", "2.0 gb free", "11.5 gb of 16 gb · 74%", "menu bar", "cpu · swap · ",
            "saved history · local", "dashboard history · local · 24 h", "1 of 1440", "MEASUREMENT MODEL" }) {
        const qsizetype at = said.indexOf(text, last + 1);
        EXPECT_GT(at, last) << text << " in " << said.join("\n").toStdString();
        last = std::max(at, last);
    }
    const QWidget* page = &tab.page();
    tab.kernel.reading.freeBytes = 499 * OpenTab::mb;
    tab.tick(10);
    EXPECT_EQ(&tab.page(), page);
    EXPECT_TRUE(tab.said().contains("499 mb free"));
}

} // namespace
