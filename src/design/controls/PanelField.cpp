// SPDX-License-Identifier: Apache-2.0
#include "design/controls/PanelField.h"

#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"

#include <QEvent>
#include <QPainter>

namespace ostrel {

namespace {

constexpr int sideInset = 8;
constexpr double ringInset = 2;

} // namespace

PanelField::PanelField(const QString& placeholder, double size, int width, int height)
{
    setFont(OstrelStyle::mono(size, QFont::Normal));
    setFixedSize(width, height);
    setFrame(false);
    setTextMargins(sideInset, 0, sideInset, 0);
    setPlaceholderText(placeholder);
    setAccessibleName(placeholder);
    showColors();
}

void PanelField::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(this);
        const auto mode = appearanceOf(*this);
        const QRectF bounds(rect());
        fillRounded(painter, bounds, OstrelStyle::radius, OstrelStyle::bg.in(mode));
        outlineRounded(painter, bounds, OstrelStyle::radius, OstrelStyle::hair.in(mode));
        if (hasFocus())
            drawFocusRing(
                painter, bounds, ringInset, OstrelStyle::radius - ringInset, OstrelStyle::ink.in(mode));
    }
    QLineEdit::paintEvent(event);
}

void PanelField::changeEvent(QEvent* event)
{
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        showColors();
}

void PanelField::showColors()
{
    // The ground is ours: the toolkit would fill it squarely.
    if (palette().color(QPalette::Base).alpha() == 0)
        return;
    QPalette own;
    own.setColor(QPalette::Base, Qt::transparent);
    setPalette(own);
}

} // namespace ostrel
