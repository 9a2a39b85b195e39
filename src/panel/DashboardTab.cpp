// SPDX-License-Identifier: Apache-2.0
#include "panel/DashboardTab.h"

#include "automations/AgentBudgetView.h"
#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "history/OstrelHistoryView.h"
#include "panel/DashboardText.h"
#include "panel/GraphSeries.h"
#include "panel/MetricCard.h"
#include "panel/PanelSize.h"

#include <QVBoxLayout>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr int doorSpacing = 8;
constexpr int doorWidth = (contentWidth - doorSpacing) / 2;
constexpr int graphSpacing = 24;
constexpr int graphWidth = (contentWidth - graphSpacing) / 2;
constexpr int graphHeight = 76;
constexpr int graphBlockSpacing = 7;
constexpr int captionLines = 2;

OstrelButton* button(const char* title, int width, const char* toolTip, std::function<void()> handler)
{
    return ostrelTip(new OstrelButton(title, width, std::move(handler)), toolTip);
}

QWidget* pressureRow(const DashboardText& text, PanelBody& panel)
{
    auto* pressure = lineLabel(
        utf16(text.pressure), 12, QFont::Medium, text.alarming ? OstrelStyle::red : OstrelStyle::ink);
    pressure->setToolTip(utf16(text.pressureToolTip));
    return viewRow(
        { pressure, nullptr,
            button("workloads", 112, "open the workloads tab: the processes behind the pressure",
                [&panel] { panel.switchMode(OstrelMode::processes); }),
            button("server", 96, "open the server tab: remote capacity and the tasks you send there",
                [&panel] { panel.switchMode(OstrelMode::server); }) },
        contentWidth);
}

QWidget* door(const char* title, OstrelMode mode, PanelBody& panel)
{
    return ostrelTip(
        actionButton(title, doorWidth, [&panel, mode] { panel.switchMode(mode); }), utf16(words(mode).hint));
}

/// Of two lines always: what it says grows with the history.
ZOLShellLabel* captionLabel(std::string_view caption, std::string_view key, LiveRegistry& live)
{
    auto* label = wrappingLabel(utf16(caption), 9, QFont::Normal, OstrelStyle::muted, graphWidth);
    label->setMaximumLines(captionLines);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    label->setFixedHeight(captionLines * label->minimumSizeHint().height());
    live.add(fmt::format("history-caption-{}", key), label);
    return label;
}

/// A graph of the minute history with its caption; the tick keeps both up to date.
QWidget* graphBlock(const char* title, const std::string& key, const OstrelHistory& history,
    std::int64_t OstrelHistory::Point::*percentage, LiveRegistry& live)
{
    auto* block = new QWidget;
    block->setFixedWidth(graphWidth);
    auto* column = new QVBoxLayout(block);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(graphBlockSpacing);
    column->addWidget(fixedLabel(title, 10, QFont::Medium, OstrelStyle::muted, graphWidth));
    GraphSeries series = graphSeries(history, percentage);
    auto* graph = new OstrelHistoryView(
        std::move(series.values), std::move(series.minutes), title, graphWidth, graphHeight, series.boundary);
    live.add(key, graph);
    column->addWidget(graph);
    column->addWidget(captionLabel(historyCaption(history, historyWindowMinutes), key, live));
    return block;
}

QWidget* graphRow(const OstrelHistory& history, LiveRegistry& live)
{
    using Point = OstrelHistory::Point;
    return viewRow({ graphBlock("CPU ACTIVITY · 2 H", "cpu", history, &Point::cpu, live),
                       graphBlock("SWAP RESIDENCY · 2 H", "swap", history, &Point::swap, live) },
        contentWidth, graphSpacing);
}

QWidget* serverRow(const DashboardText& text, SnapshotCycle& snapshots, PanelBody& panel)
{
    return viewRow({ lineLabel(utf16(text.server), 11, QFont::Medium, OstrelStyle::ink), nullptr,
                       button("refresh", 76, "read the process snapshot again",
                           [&snapshots] { snapshots.fetchPythonData(); }),
                       button("open server", 108, "open the server tab",
                           [&panel] { panel.switchMode(OstrelMode::server); }) },
        contentWidth);
}

DashboardFacts factsOf(const PanelState& state)
{
    return { .native = state.tick.native(),
        .cpu = state.tick.lastCPU(),
        .nativeInterval = state.tick.nativeInterval(),
        .snapshotAge = state.snapshots.snapshotAgeText(),
        .serverChecked = state.serverChecked && state.serverChecked() };
}

} // namespace

void renderOverview(QVBoxLayout& body, const OstrelData& data, const PanelState& state,
    AutomationsTab& automations, LiveRegistry& live, PanelBody& panel)
{
    const DashboardText text = dashboardText(factsOf(state), data);
    body.addWidget(pressureRow(text, panel));
    body.addSpacing(16);
    body.addWidget(metricCards(text.metrics, contentWidth, live));
    body.addSpacing(8);
    auto* age = fixedLabel(utf16(text.snapshot), 9, QFont::Normal, OstrelStyle::muted, contentWidth);
    live.add("snapshot-age", age);
    body.addWidget(age);
    body.addSpacing(14);
    body.addWidget(viewRow({ door("agents & terminals", OstrelMode::sessions, panel),
                               door("inspect / stop a process", OstrelMode::processes, panel) },
        contentWidth));
    body.addSpacing(8);
    body.addWidget(viewRow({ door("review cleanup", OstrelMode::cleanup, panel),
                               door("continue on server", OstrelMode::server, panel) },
        contentWidth));
    body.addSpacing(14);
    renderAgentBudget(body, automations, contentWidth);
    body.addSpacing(8);
    body.addWidget(button("automations & refresh limits", 252,
                       "open the automations tab: every scheduler lane, its rhythm and its last result",
                       [&panel] { panel.switchMode(OstrelMode::automations); }),
        0, Qt::AlignLeft);
    body.addSpacing(16);
    body.addWidget(graphRow(state.history, live));
    body.addSpacing(18);
    body.addWidget(serverRow(text, state.snapshots, panel));
    body.addSpacing(10);
}

} // namespace ostrel
