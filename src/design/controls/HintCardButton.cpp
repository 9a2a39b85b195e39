// SPDX-License-Identifier: Apache-2.0
#include "design/controls/HintCardButton.h"

#include "design/controls/ZOLHintCard.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

constexpr int aroundCaption = 20;

int widthFor(const QString& caption)
{
    const QFontMetricsF metrics(ZOLHintCard::font(ButtonLook::captionSize, QFont::Medium));
    const int text = static_cast<int>(std::ceil(metrics.horizontalAdvance(caption.toLower())));
    return std::max(HintCardButton::leastWidth, text + aroundCaption);
}

} // namespace

HintCardButton::HintCardButton(const QString& caption, int tag, QWidget* parent)
    : PaintedButton(ButtonKind::hintCard, caption, widthFor(caption), buttonHeight, parent)
    , tag_(tag)
{
}

QFont HintCardButton::captionFont(double size, QFont::Weight weight) const
{
    return ZOLHintCard::font(size, weight);
}

} // namespace ostrel
