// SPDX-License-Identifier: Apache-2.0
#include "design/controls/PanelField.h"

#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/controls/FieldGround.h"

#include <QEvent>
#include <QPainter>

namespace ostrel {

namespace {

constexpr int sideInset = 8;

} // namespace

PanelField::PanelField(const QString& placeholder, double size, int width, int height)
{
    setFont(OstrelStyle::mono(size, QFont::Normal));
    setFixedSize(width, height);
    setFrame(false);
    setTextMargins(sideInset, 0, sideInset, 0);
    setPlaceholderText(placeholder);
    setAccessibleName(placeholder);
    showThrough(*this);
}

void PanelField::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(this);
        paintFieldGround(painter, *this);
    }
    QLineEdit::paintEvent(event);
}

void PanelField::changeEvent(QEvent* event)
{
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        showThrough(*this);
}

} // namespace ostrel
