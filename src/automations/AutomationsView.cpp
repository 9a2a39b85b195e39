// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsView.h"

#include "automations/AutomationRowView.h"
#include "automations/AutomationsTab.h"
#include "automations/AutomationsViews.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/PanelField.h"
#include "design/controls/TabLayout.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <cstddef>

namespace ostrel {

namespace {

constexpr std::size_t chipsARow = 5;
constexpr int chipSpacing = 6;
constexpr int filterSpacing = 8;
constexpr int fieldWidth = 240;
constexpr int fieldHeight = 28;

void addHeader(QVBoxLayout& body, const AutomationsBody& text, AutomationsTab& tab, int width)
{
    auto* words = new QWidget;
    auto* column = new QVBoxLayout(words);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    const int room = width - text.refresh.width - filterSpacing;
    addText(*column, text.title, room, { .size = 13, .color = OstrelStyle::ink, .weight = QFont::DemiBold });
    addText(*column, text.readLine, room);
    body.addWidget(
        viewRow({ words, automationButton(text.refresh, [&tab] { tab.refresh(); }) }, width, filterSpacing));
}

void addLanes(QVBoxLayout& body, const AutomationsBody& text, AutomationsTab& tab)
{
    QHBoxLayout* row = nullptr;
    for (std::size_t at = 0; at < text.lanes.size(); ++at) {
        if (at % chipsARow == 0) {
            if (row) {
                row->addStretch(1);
                body.addSpacing(chipSpacing);
            }
            row = new QHBoxLayout;
            row->setSpacing(chipSpacing);
            body.addLayout(row);
        }
        const LaneChip& chip = text.lanes[at];
        row->addWidget(automationButton(chip.button, [&tab, lane = chip.lane] { tab.chooseLane(lane); }));
    }
    if (row)
        row->addStretch(1);
    body.addSpacing(chipSpacing); // the filters are one more row
}

QWidget* searchField(const std::string& query, AutomationsTab& tab)
{
    auto* field = new PanelField("name / host", 11, fieldWidth, fieldHeight);
    field->setText(utf16(query));
    field->setAccessibleName("Filter automations by name or host; press Return");
    field->setObjectName("automations-search");
    QObject::connect(
        field, &QLineEdit::returnPressed, field, [&tab, field] { tab.search(field->text().toStdString()); });
    return field;
}

void addFilters(QVBoxLayout& body, const AutomationsBody& text, AutomationsTab& tab)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(filterSpacing);
    for (const StateChip& chip : text.states)
        row->addWidget(
            automationButton(chip.button, [&tab, filter = chip.filter] { tab.chooseState(filter); }));
    row->addWidget(searchField(text.query, tab));
    row->addStretch(1);
    body.addLayout(row);
}

/// What happened: of the inventory, of the last action, and what it warns of.
void addNews(QVBoxLayout& body, const AutomationsBody& text, int width)
{
    const auto add = [&](const std::string& line, const ThemedColor& color, int lines) {
        addText(body, line, width, { .color = color, .lines = lines, .weight = QFont::Medium });
    };
    add(text.error, OstrelStyle::red, 2);
    if (!text.error.empty())
        body.addSpacing(8);
    add(text.lastAction, OstrelStyle::ink, 3);
    if (!text.lastAction.empty())
        body.addSpacing(8);
    for (const std::string& alert : text.alerts)
        add(alert, OstrelStyle::red, 2);
    if (!text.alerts.empty())
        body.addSpacing(8);
}

} // namespace

void renderAutomations(QVBoxLayout& body, AutomationsTab& tab, int width)
{
    const AutomationsBody text = tab.body();
    body.addSpacing(12);
    addHeader(body, text, tab, width);
    body.addSpacing(8);
    addLanes(body, text, tab);
    addFilters(body, text, tab);
    body.addSpacing(8);
    addNews(body, text, width);
    addText(body, text.pageLabel, width, { .size = 10 });
    addText(body, text.nothing, width, { .lines = 2 });
    for (const AutomationRow& row : text.rows)
        addAutomationRow(body, row, tab, width);
    body.addSpacing(8);
    body.addWidget(viewRow({ automationButton(text.previous, [&tab] { tab.previousPage(); }),
                               automationButton(text.next, [&tab] { tab.nextPage(); }), nullptr },
        width));
    body.addSpacing(16);
}

} // namespace ostrel
