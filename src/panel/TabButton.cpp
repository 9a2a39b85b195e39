// SPDX-License-Identifier: Apache-2.0
#include "panel/TabButton.h"

#include <QEnterEvent>
#include <QPainter>

namespace ostrel {

namespace {

constexpr int tabWidth = 96;
constexpr int tabHeight = 28;
constexpr double barInset = 10;
constexpr double barHeight = 2;
constexpr double ringRadius = 6;

} // namespace

TabButton::TabButton(const QString& title, const QString& hint, const OstrelStyle& style, QWidget* parent)
    : QAbstractButton(parent)
    , style_(style)
{
    setText(title);
    setToolTip(hint);
    setAccessibleName(title);
    setCheckable(true);
    setAutoExclusive(true);
    setCursor(Qt::PointingHandCursor);
    setFixedSize(tabWidth, tabHeight);
}

QSize TabButton::sizeHint() const { return { tabWidth, tabHeight }; }

void TabButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const bool lit = isChecked() || underMouse();
    painter.setPen(Qt::NoPen);
    if (lit) {
        painter.setBrush(style_.hover);
        painter.drawRoundedRect(bounds, OstrelStyle::radius, OstrelStyle::radius);
    }
    if (isChecked()) {
        painter.setBrush(style_.red);
        const QRectF bar(barInset, height() - barHeight, width() - 2 * barInset, barHeight);
        painter.drawRoundedRect(bar, 1, 1);
    }
    painter.setPen(lit ? style_.ink : style_.muted);
    painter.setFont(OstrelStyle::mono(11, isChecked() ? QFont::DemiBold : QFont::Normal));
    painter.drawText(rect(), Qt::AlignCenter, text());
    if (hasFocus()) {
        painter.setPen(QPen(style_.ink, 2));
        painter.setBrush(Qt::NoBrush);
        // Above the bar, which says something else.
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -barHeight - 3), ringRadius, ringRadius);
    }
}

void TabButton::enterEvent(QEnterEvent*) { update(); }

void TabButton::leaveEvent(QEvent*) { update(); }

} // namespace ostrel
