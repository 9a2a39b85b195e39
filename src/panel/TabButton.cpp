// SPDX-License-Identifier: Apache-2.0
#include "panel/TabButton.h"

#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"

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

TabButton::TabButton(const QString& title, const QString& hint, QWidget* parent)
    : QAbstractButton(parent)
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
        painter.setBrush(resolved(OstrelStyle::hover, *this));
        painter.drawRoundedRect(bounds, OstrelStyle::radius, OstrelStyle::radius);
    }
    if (isChecked()) {
        painter.setBrush(resolved(OstrelStyle::red, *this));
        const QRectF bar(barInset, height() - barHeight, width() - 2 * barInset, barHeight);
        painter.drawRoundedRect(bar, 1, 1);
    }
    painter.setPen(resolved(lit ? OstrelStyle::ink : OstrelStyle::muted, *this));
    painter.setFont(OstrelStyle::mono(11, isChecked() ? QFont::DemiBold : QFont::Normal));
    painter.drawText(rect(), Qt::AlignCenter, text());
    if (hasFocus()) {
        painter.setPen(QPen(resolved(OstrelStyle::ink, *this), 2));
        painter.setBrush(Qt::NoBrush);
        // Above the bar, which says something else.
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -barHeight - 3), ringRadius, ringRadius);
    }
}

void TabButton::enterEvent(QEnterEvent*) { update(); }

void TabButton::leaveEvent(QEvent*) { update(); }

} // namespace ostrel
