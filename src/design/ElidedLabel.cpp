// SPDX-License-Identifier: Apache-2.0
#include "design/ElidedLabel.h"

#include <QFontMetrics>
#include <QPainter>

namespace ostrel {

ElidedLabel::ElidedLabel(const QString& text, const QFont& font, const QColor& color, QWidget* parent)
    : QWidget(parent)
    , text_(text)
    , color_(color)
{
    setFont(font);
    setAccessibleName(text);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString& text)
{
    if (text == text_)
        return;
    text_ = text;
    setAccessibleName(text);
    updateToolTip();
    update();
}

QSize ElidedLabel::sizeHint() const
{
    const QFontMetrics metrics(font());
    return { metrics.horizontalAdvance(text_), metrics.height() };
}

QSize ElidedLabel::minimumSizeHint() const { return { 0, QFontMetrics(font()).height() }; }

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(color_);
    const QString shown = QFontMetrics(font()).elidedText(text_, Qt::ElideRight, width());
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
}

void ElidedLabel::resizeEvent(QResizeEvent*) { updateToolTip(); }

void ElidedLabel::updateToolTip()
{
    const bool cut = QFontMetrics(font()).horizontalAdvance(text_) > width();
    setToolTip(cut ? text_ : QString());
}

} // namespace ostrel
