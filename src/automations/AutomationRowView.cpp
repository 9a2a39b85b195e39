// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationRowView.h"

#include "automations/AutomationsTab.h"
#include "automations/AutomationsViews.h"
#include "design/Accessibility.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/voxel/AutomationVoxelView.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ostrel {

namespace {

constexpr int rowSpacing = 10;
constexpr int rowInset = 6;
constexpr int badgeSize = 18;
/// What the line's title leaves to badge, word and button.
constexpr int besideTitle = 300;
constexpr int wordWidth = besideTitle - badgeSize - 64 - 4 * rowSpacing;

constexpr int cardSpacing = 4;
constexpr int cardTop = 8;
constexpr int cardLeft = 28;
constexpr int cardBottom = 12;
constexpr int lineSpacing = 8;
constexpr int labelWidth = 140;
/// What a value of the card leaves free at most.
constexpr int besideValue = 200;

/// A view of several for one job, which is its name for assistive technology: their buttons say the same.
QWidget* jobView(const AutomationRow& row, int width)
{
    auto* view = new QWidget;
    view->setFixedWidth(width);
    setAccessibleRole(*view, QAccessible::Grouping);
    view->setAccessibleName(utf16(row.accessibilityLabel));
    return view;
}

QWidget* lineView(const AutomationRow& row, AutomationsTab& tab, int width)
{
    QWidget* view = jobView(row, width);
    auto* line = new QHBoxLayout(view);
    line->setContentsMargins(0, rowInset, 0, rowInset);
    line->setSpacing(rowSpacing);
    line->addWidget(new AutomationVoxelView(row.item.voxelFamily(), row.item.voxelState(), badgeSize));
    auto* column = new QVBoxLayout;
    column->setSpacing(1);
    const int room = width - besideTitle;
    column->addWidget(fixedLabel(utf16(row.title), 12, QFont::Medium, OstrelStyle::ink, room));
    column->addWidget(fixedLabel(utf16(row.detail), 11, QFont::Normal, OstrelStyle::muted, room));
    line->addLayout(column);
    line->addWidget(flexSpacer());
    auto* word = fixedLabel(
        utf16(row.word), 11, QFont::Normal, row.failed ? OstrelStyle::red : OstrelStyle::muted, wordWidth);
    word->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    line->addWidget(word);
    line->addWidget(automationButton(row.open, [&tab, item = row.item] { tab.toggleRow(item); }));
    return view;
}

/// Label and value of each line, one below the other.
QGridLayout* linesLayout(const AutomationCard& card, int width)
{
    auto* lines = new QGridLayout;
    lines->setHorizontalSpacing(lineSpacing);
    lines->setVerticalSpacing(cardSpacing);
    lines->setColumnStretch(1, 1);
    int at = 0;
    for (const AutomationCard::Line& line : card.lines) {
        lines->addWidget(textLabel(line.label, labelWidth), at, 0, Qt::AlignTop);
        lines->addWidget(textLabel(line.value, width - besideValue,
                             { .color = OstrelStyle::ink, .lines = 2, .weight = QFont::Medium }),
            at++, 1, Qt::AlignLeft);
    }
    return lines;
}

QWidget* actionsView(const AutomationRow& row, AutomationsTab& tab)
{
    const AutomationCard& card = *row.card;
    auto* view = new QWidget;
    auto* across = new QHBoxLayout(view);
    across->setContentsMargins(0, 0, 0, 0);
    across->setSpacing(lineSpacing);
    const auto add = [&](const std::optional<AutomationCard::Action>& action) {
        if (action)
            across->addWidget(automationButton(
                action->button, [&tab, op = action->op, item = row.item] { tab.confirm(op, item); }));
    };
    add(card.run);
    add(card.toggle);
    if (!card.toggle)
        across->addWidget(
            lineLabel("switched only in its own interface", 11, QFont::Normal, OstrelStyle::muted));
    add(card.plan);
    across->addWidget(automationButton(card.receipts, [&tab] { tab.openReceipts(); }));
    across->addStretch(1);
    return view;
}

QWidget* cardView(const AutomationRow& row, AutomationsTab& tab, int width)
{
    QWidget* view = jobView(row, width);
    auto* column = new QVBoxLayout(view);
    column->setContentsMargins(cardLeft, cardTop, 0, cardBottom);
    column->setSpacing(cardSpacing);
    column->addLayout(linesLayout(*row.card, width));
    column->addSpacing(6);
    const int inside = width - cardLeft;
    addText(*column, "recent runs", inside, { .weight = QFont::DemiBold });
    for (const std::string& run : row.card->runs)
        addText(*column, run, inside, { .lines = 2 });
    column->addSpacing(8);
    column->addWidget(actionsView(row, tab));
    return view;
}

} // namespace

void addAutomationRow(QVBoxLayout& list, const AutomationRow& row, AutomationsTab& tab, int width)
{
    if (!row.heading.empty()) {
        list.addSpacing(6);
        addText(list, row.heading, width, { .weight = QFont::DemiBold });
        list.addSpacing(4);
    }
    list.addWidget(lineView(row, tab, width));
    list.addWidget(separator(width));
    if (!row.card)
        return;
    list.addWidget(cardView(row, tab, width));
    list.addWidget(separator(width));
}

} // namespace ostrel
