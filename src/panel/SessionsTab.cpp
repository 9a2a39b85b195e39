// SPDX-License-Identifier: Apache-2.0
#include "panel/SessionsTab.h"

#include "automations/AgentBudgetView.h"
#include "design/Accessibility.h"
#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "panel/LineBox.h"
#include "panel/PanelSize.h"
#include "panel/SessionsText.h"
#include "sessions/SessionPanelView.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <string_view>

namespace ostrel {

namespace {

constexpr int doorWidth = 252;
constexpr int detailsWidth = 104;
constexpr int turnWidth = 112;
constexpr int rowButtonHeight = 36;
constexpr int rowSpacing = 8;
constexpr int counterHeight = 24;
constexpr int counterMargin = 4;
constexpr int countWidth = 48;

void addNote(QVBoxLayout& body, std::string_view text, double size)
{
    body.addWidget(wrappingLabel(utf16(text), size, QFont::Normal, OstrelStyle::muted, contentWidth));
}

QWidget* grouped(QWidget* row, const QString& name)
{
    setAccessibleRole(*row, QAccessible::Grouping);
    row->setAccessibleName(name);
    return row;
}

void addProcess(QVBoxLayout& body, const LiveProcesses::Row& row, LiveSessions& live)
{
    auto* details = new OstrelButton(
        "details", detailsWidth, [&live, proc = row.proc] { live.showDetails(proc); }, rowButtonHeight);
    details->setObjectName(utf16("details-" + row.proc.pid));
    body.addWidget(grouped(
        viewRow({ elidedLabel(utf16(row.text), 11, QFont::Medium, OstrelStyle::ink), nullptr, details },
            contentWidth, rowSpacing),
        utf16(row.text)));
    body.addSpacing(6);
}

void addPager(QVBoxLayout& body, const Pager& pager, LiveSessions& live)
{
    auto* previous = new OstrelButton(
        "previous", turnWidth, [&live] { live.previousPage(); }, rowButtonHeight);
    previous->setObjectName("processes-previous");
    previous->setEnabled(pager.previous);
    auto* next = new OstrelButton(
        "next", turnWidth, [&live] { live.nextPage(); }, rowButtonHeight);
    next->setObjectName("processes-next");
    next->setEnabled(pager.next);
    auto* place = lineLabel(utf16(pager.text), 11, QFont::Normal, OstrelStyle::muted);
    body.addWidget(grouped(
        viewRow({ previous, place, next, nullptr }, contentWidth, rowSpacing), "pages of the processes"));
}

void addProcesses(QVBoxLayout& body, const OstrelData& data, LiveSessions& live)
{
    const LiveProcesses processes = live.processes(data);
    body.addWidget(section(utf16(processes.title), contentWidth));
    addNote(body, processes.note, 11);
    body.addSpacing(8);
    if (!processes.nothing.empty())
        addNote(body, processes.nothing, 11);
    for (const LiveProcesses::Row& row : processes.rows)
        addProcess(body, row, live);
    if (processes.pager)
        addPager(body, *processes.pager, live);
    body.addSpacing(16);
}

/// A family and how many there are of it, over a hairline.
QWidget* counterRow(const ProcessCounters::Row& counter)
{
    auto* key = elidedLabel(utf16(counter.key), 11, QFont::Normal, OstrelStyle::ink);
    key->setToolTip(plainToolTip(utf16(counter.key)));
    auto* count = fixedLabel(utf16(counter.count), 13, QFont::DemiBold, OstrelStyle::ink, countWidth);
    count->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* row = new QWidget;
    row->setFixedSize(contentWidth, counterHeight);
    row->setToolTip(plainToolTip(utf16(counter.toolTip)));
    auto* column = new QVBoxLayout(row);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto* across = new QHBoxLayout;
    across->setContentsMargins(counterMargin, 0, counterMargin, 0);
    across->addWidget(key, 1);
    across->addWidget(count);
    column->addLayout(across, 1);
    column->addWidget(separator(contentWidth));
    return row;
}

void addCounters(QVBoxLayout& body, const ProcessCounters& counters)
{
    body.addWidget(section(utf16(counters.title), contentWidth));
    for (const ProcessCounters::Row& row : counters.rows)
        body.addWidget(counterRow(row));
    if (!counters.bundles.empty()) {
        body.addSpacing(4);
        addNote(body, counters.bundles, 10);
    }
    body.addSpacing(8);
    const LineBox box(body);
    box.title("PER SESSION");
    box.add(counters.perSession, 14, OstrelStyle::ink, QFont::DemiBold);
    body.addSpacing(8);
}

void addLaunchd(QVBoxLayout& body, const LaunchdBox& launchd)
{
    const LineBox box(body);
    box.title("LAUNCHD");
    box.add(
        launchd.counts, 12, launchd.alarming ? OstrelStyle::redBright : OstrelStyle::ink, QFont::DemiBold);
    box.add(launchd.labels, 10, OstrelStyle::muted);
    body.addSpacing(8);
}

} // namespace

void renderSessions(
    QVBoxLayout& body, const OstrelData& data, const PanelState& state, const SessionsParts& parts)
{
    renderAgentBudget(body, parts.automations, contentWidth);
    body.addSpacing(16);
    auto* door = new OstrelButton("automations & refresh limits", doorWidth,
        [&panel = parts.panel] { panel.switchMode(OstrelMode::automations); });
    ostrelTip(door, "open the automations tab: every scheduler lane, its rhythm and its last result");
    body.addWidget(door, 0, Qt::AlignLeft);
    body.addSpacing(16);
    body.addWidget(sessionPanelView(parts.terminals, contentWidth));
    body.addSpacing(20);
    addProcesses(body, data, parts.live);
    if (const auto counters = processCounters(data, state.snapshots.snapshotAgeText()))
        addCounters(body, *counters);
    addLaunchd(body, launchdBox(data.launchd));
}

} // namespace ostrel
