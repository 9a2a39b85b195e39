// SPDX-License-Identifier: Apache-2.0
#include "janitor/FindingsView.h"

#include "design/Accessibility.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "janitor/JanitorTab.h"
#include "janitor/JanitorViews.h"

#include <cstddef>

namespace ostrel {

namespace {

ThemedColor colorOf(LevelColor color)
{
    switch (color) {
    case LevelColor::red:
        return OstrelStyle::red;
    case LevelColor::ink:
        return OstrelStyle::ink;
    case LevelColor::muted:
        break;
    }
    return OstrelStyle::muted;
}

QWidget* cardView(const FindingCard& card, const JanitorFinding& finding, JanitorTab& janitor, int width)
{
    const JanitorColumn column(width);
    setAccessibleRole(*column.view(), QAccessible::Grouping);
    column.view()->setAccessibleName(utf16(card.accessibilityLabel));
    auto* level = lineLabel(utf16(card.level), 8, QFont::DemiBold, colorOf(card.color));
    auto* title = elidedLabel(utf16(card.title), 12, QFont::DemiBold, OstrelStyle::ink);
    if (card.amount.empty())
        column.add(viewRow({ level, title }, width));
    else
        column.add(viewRow(
            { level, title, lineLabel(utf16(card.amount), 11, QFont::DemiBold, OstrelStyle::ink) }, width));
    column.gap(4);
    column.text(card.seen, 11, OstrelStyle::ink, 3);
    column.text(card.source, 10, OstrelStyle::muted, 2);
    column.text(card.proposal, 10.5, OstrelStyle::muted, 2);
    if (card.button) {
        column.gap(6);
        OstrelButton* button
            = janitorButton(*card.button, [&janitor, finding] { janitor.pressFinding(finding); });
        // Several may say the same.
        if (button->objectName().isEmpty())
            button->setObjectName(utf16("finding-" + finding.id));
        column.addNarrow(button);
    }
    return column.view();
}

} // namespace

QWidget* findingsView(JanitorTab& janitor, int width)
{
    const FindingsBody body = janitor.findingsBody();
    // A copy: a handler keeps its finding though the next reading brings others.
    const auto findings = janitor.state().findings;
    const JanitorColumn column(width);
    auto* title = lineLabel(utf16(body.title), 13, QFont::DemiBold, OstrelStyle::ink);
    OstrelButton* refresh = janitorButton(body.refresh, [&janitor] { janitor.refreshFindings(); });
    refresh->setObjectName("findings-refresh");
    column.add(viewRow({ title, nullptr, refresh }, width));
    column.status(body.status, body.lastAction);
    column.gap(10);
    column.text(body.nothing, 11, OstrelStyle::muted, 0);
    for (std::size_t at = 0; at < body.cards.size(); ++at) {
        column.add(cardView(body.cards[at], findings[at], janitor, width));
        column.rule();
    }
    if (body.cards.empty())
        column.gap(10);
    auto* line = elidedLabel(utf16(body.cleanupLine), 11, QFont::Normal, OstrelStyle::muted);
    column.add(viewRow(
        { line, janitorButton(body.openCleanup, [&janitor] { janitor.openTab("cleanup"); }) }, width));
    return column.view();
}

} // namespace ostrel
