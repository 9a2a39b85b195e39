// SPDX-License-Identifier: Apache-2.0
#include "sessions/SessionPanelView.h"

#include "design/Accessibility.h"
#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "sessions/SessionPanel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <string>
#include <utility>

namespace ostrel {

namespace {

constexpr int spacing = 8;
constexpr int rowSpacing = 12;
constexpr int refreshWidth = 196;
constexpr int refreshHeight = 36;
constexpr int openWidth = 156;
constexpr int besideTitle = 176; ///< what a row keeps for its button
constexpr int turnWidth = 110;

/// Views that are about one thing: their buttons say the same as those of others.
QWidget* grouped(QWidget* row, const QString& name)
{
    setAccessibleRole(*row, QAccessible::Grouping);
    row->setAccessibleName(name);
    return row;
}

void addText(QVBoxLayout& column, const std::string& text, const ThemedColor& color, int width)
{
    column.addWidget(wrappingLabel(utf16(text), 11, QFont::Normal, color, width));
}

void addTerminal(QVBoxLayout& column, const SessionRow& row, SessionPanel& sessions, int width)
{
    auto* title = elidedLabel(utf16(row.title), 11, QFont::Normal, OstrelStyle::ink);
    title->setFixedWidth(width - besideTitle);
    // Without a handle a press leads nowhere.
    auto* open = new OstrelButton("open terminal", openWidth, [&sessions, handle = row.handle] {
        if (handle)
            sessions.openTerminal(*handle);
    });
    ostrelTip(open, "Open this exact existing Orca terminal. No prompt is sent and no session is closed.");
    open->setEnabled(row.enabled);
    open->setObjectName(utf16("terminal-" + row.handle.value_or("")));
    auto* line = new QWidget;
    line->setFixedWidth(width);
    auto* across = new QHBoxLayout(line);
    across->setContentsMargins(0, 0, 0, 0);
    across->setSpacing(rowSpacing);
    across->addWidget(title);
    across->addStretch(1);
    across->addWidget(open);
    column.addWidget(grouped(line, utf16(row.title)));
    auto* detail = elidedLabel(utf16(row.detail), 11, QFont::Normal, OstrelStyle::muted);
    detail->setFixedWidth(width);
    column.addWidget(detail);
}

void addPager(QVBoxLayout& column, const Pager& pager, SessionPanel& sessions, int width)
{
    auto* previous = new OstrelButton("previous", turnWidth, [&sessions] { sessions.previousPage(); });
    previous->setObjectName("terminals-previous");
    previous->setEnabled(pager.previous);
    auto* next = new OstrelButton("next", turnWidth, [&sessions] { sessions.nextPage(); });
    next->setObjectName("terminals-next");
    next->setEnabled(pager.next);
    auto* place = lineLabel(utf16(pager.text), 11, QFont::Normal, OstrelStyle::ink);
    column.addWidget(
        grouped(viewRow({ previous, place, next, nullptr }, width, rowSpacing), "pages of the terminals"));
}

} // namespace

QWidget* sessionPanelView(SessionPanel& sessions, int width)
{
    const SessionBody body = sessions.body();
    auto* view = new QWidget;
    view->setFixedWidth(width);
    auto* stack = new QVBoxLayout(view);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(spacing);
    addText(*stack, "CONTINUE IN TERMINAL · ORCA", OstrelStyle::ink, width);
    addText(*stack, body.status, OstrelStyle::muted, width);
    for (const std::string& note : body.notes)
        addText(*stack, note, OstrelStyle::muted, width);
    auto* refresh = new OstrelButton(
        utf16(body.refresh), refreshWidth, [&sessions] { sessions.refresh(); }, refreshHeight);
    refresh->setObjectName("terminals-refresh");
    refresh->setEnabled(body.refreshEnabled);
    stack->addWidget(refresh, 0, Qt::AlignLeft);
    for (const SessionRow& row : body.rows)
        addTerminal(*stack, row, sessions, width);
    if (body.pager)
        addPager(*stack, *body.pager, sessions, width);
    return view;
}

} // namespace ostrel
