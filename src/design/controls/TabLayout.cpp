// SPDX-License-Identifier: Apache-2.0
#include "design/controls/TabLayout.h"

#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/controls/ZOLShellLabel.h"

#include <QPainter>

namespace ostrel {

namespace {

class Rule final : public QWidget {
protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        drawRule(painter, QRectF(rect()), OstrelStyle::hair.in(appearanceOf(*this)));
    }
};

} // namespace

ZOLShellLabel* wrappingLabel(
    const QString& text, double size, QFont::Weight weight, const ThemedColor& color, int width)
{
    auto* label = lineLabel(text, size, weight, color);
    label->setWordWrap(true);
    if (width > 0)
        label->setFixedWidth(width);
    return label;
}

ZOLShellLabel* lineLabel(const QString& text, double size, QFont::Weight weight, const ThemedColor& color)
{
    return new ZOLShellLabel(text, OstrelStyle::mono(size, weight), color);
}

ZOLShellLabel* elidedLabel(const QString& text, double size, QFont::Weight weight, const ThemedColor& color)
{
    auto* label = lineLabel(text, size, weight, color);
    label->setMaximumLines(1);
    return label;
}

QWidget* separator(int width)
{
    auto* rule = new Rule;
    rule->setFixedHeight(1);
    if (width > 0)
        rule->setFixedWidth(width);
    return rule;
}

} // namespace ostrel
