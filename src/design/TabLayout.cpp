// SPDX-License-Identifier: Apache-2.0
#include "design/TabLayout.h"

#include <QFrame>
#include <QLabel>
#include <QPalette>

namespace ostrel {

QLabel* lineLabel(const QString& text, const QFont& font, const QColor& color)
{
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    label->setFont(font);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, color);
    label->setPalette(palette);
    return label;
}

QLabel* wrappingLabel(const QString& text, const QFont& font, const QColor& color, int width)
{
    auto* label = lineLabel(text, font, color);
    label->setWordWrap(true);
    if (width > 0)
        label->setFixedWidth(width);
    return label;
}

QFrame* separator(const QColor& color)
{
    auto* line = new QFrame;
    line->setFixedHeight(1);
    line->setAutoFillBackground(true);
    QPalette palette = line->palette();
    palette.setColor(QPalette::Window, color);
    line->setPalette(palette);
    return line;
}

} // namespace ostrel
