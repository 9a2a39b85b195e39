// SPDX-License-Identifier: Apache-2.0
#include "design/controls/PanelMenu.h"

#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"

#include <QAction>
#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cstddef>

namespace ostrel {

namespace {

constexpr int sideInset = 14;
constexpr int longestText = 420; ///< points

} // namespace

PanelMenu::PanelMenu(const QWidget& view)
    : QMenu(view.window())
{
    setAttribute(Qt::WA_DeleteOnClose);
    setAppearance(*this, appearanceOf(view));
    view.window()->installEventFilter(this);
}

void PanelMenu::add(const Row& row)
{
    const QFont font = OstrelStyle::mono(row.size, row.weight);
    QString shown = QFontMetricsF(font).elidedText(row.text, Qt::ElideRight, longestText);
    // A single ampersand would mark a mnemonic, and vanish.
    QAction* action = addAction(QString(shown).replace('&', "&&"));
    action->setIconText(row.title);
    action->setFont(font);
    action->setEnabled(static_cast<bool>(row.handler));
    if (row.handler)
        connect(action, &QAction::triggered, action, row.handler);
    rows_.push_back(row);
    rows_.back().text = std::move(shown);
}

void PanelMenu::open(const QPoint& place, bool byPointer)
{
    popup(place);
    const auto all = actions();
    const auto first = std::find_if(all.begin(), all.end(),
        [](const QAction* action) { return action->isEnabled() && !action->isSeparator(); });
    if (!byPointer && first != all.end())
        setActiveAction(*first);
}

void PanelMenu::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const auto mode = appearanceOf(*this);
    const QRectF whole(rect());
    painter.fillRect(whole, qColor(OstrelStyle::bg.in(mode)));
    std::size_t at = 0;
    for (QAction* action : actions()) {
        const QRectF place(actionGeometry(action));
        if (action->isSeparator()) {
            drawRule(painter, QRectF(0, place.center().y(), width(), 1), OstrelStyle::hair.in(mode));
            continue;
        }
        const Row& row = rows_[at++];
        if (action == activeAction() && action->isEnabled())
            painter.fillRect(place, qColor(OstrelStyle::hover.in(mode)));
        const QFontMetricsF metrics(action->font());
        painter.setFont(action->font());
        painter.setPen(qColor(row.color.in(mode)));
        painter.drawText(
            QPointF(sideInset, place.center().y() - metrics.height() / 2 + metrics.ascent()), row.text);
    }
    outlineRounded(painter, whole, 0, OstrelStyle::hair.in(mode));
}

bool PanelMenu::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parentWidget() && event->type() == QEvent::Hide)
        close();
    return QMenu::eventFilter(watched, event);
}

} // namespace ostrel
