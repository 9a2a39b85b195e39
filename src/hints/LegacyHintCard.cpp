// SPDX-License-Identifier: Apache-2.0
#include "hints/LegacyHintCard.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "design/voxel/VoxelView.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

namespace ostrel {

namespace {

// In points.
constexpr QSize cardSize { 338, 174 };
constexpr QSize creatureSize { 126, 138 };
constexpr int leftInset = 10;
constexpr int afterCreature = 2;
constexpr int columnSpacing = 10;
constexpr int buttonSpacing = 6;
constexpr double titleSize = 11;
constexpr double factSize = 10;
constexpr int factWidth = 182;

OstrelButton* answerButton(const HintButton& button, const std::function<void()>& answer)
{
    return ostrelTip(new OstrelButton(utf16(button.caption), button.width, answer), utf16(button.toolTip));
}

} // namespace

LegacyHintCard::LegacyHintCard(
    const HintText& text, bool moves, const MotionServices& services, const HintAnswers& answers)
    : hintVoxel_(new VoxelView(creatureSize.width(), creatureSize.height(), moves, services))
{
    setFixedSize(cardSize);
    setAccessibleRole(*this, QAccessible::Grouping);
    setAccessibleName(utf16(text.title));
    hintVoxel_->setMood("attention");

    auto* const across = new QHBoxLayout(this);
    across->setContentsMargins(leftInset, 0, 0, 0);
    across->setSpacing(0);
    across->addWidget(hintVoxel_, 0, Qt::AlignVCenter);
    across->addSpacing(afterCreature);
    auto* const column = new QVBoxLayout;
    column->setSpacing(columnSpacing);
    across->addLayout(column);
    across->addStretch();
    column->addStretch();
    column->addWidget(lineLabel(utf16(text.title), titleSize, QFont::DemiBold, OstrelStyle::ink));
    column->addWidget(
        wrappingLabel(utf16(text.fact), factSize, QFont::Normal, OstrelStyle::muted, factWidth));
    auto* const buttons = new QHBoxLayout;
    buttons->setSpacing(buttonSpacing);
    buttons->addWidget(answerButton(text.buttons[0], answers.inspect));
    buttons->addWidget(answerButton(text.buttons[1], answers.snooze));
    buttons->addStretch();
    column->addLayout(buttons);
    column->addStretch();
}

void LegacyHintCard::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const double middle = hairline(painter) / 2;
    const QRectF bounds = snapped(painter, QRectF(rect()));
    const auto mode = appearanceOf(*this);
    fillRounded(painter, bounds.adjusted(middle, middle, -middle, -middle), radius - middle,
        OstrelStyle::bg.in(mode));
    outlineRounded(painter, bounds, radius - middle, OstrelStyle::hair.in(mode));
}

} // namespace ostrel
