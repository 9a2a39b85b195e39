// SPDX-License-Identifier: Apache-2.0
#include "panel/SourcedViews.h"

#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "panel/PanelSize.h"

#include <QVBoxLayout>

namespace ostrel {

namespace {

constexpr int mostLines = 2;
constexpr int lineSpacing = 2;
constexpr int afterRow = 7;

} // namespace

QWidget* sourcedRow(const SourcedRow& row)
{
    auto* stack = new QWidget;
    stack->setFixedWidth(contentWidth);
    auto* column = new QVBoxLayout(stack);
    column->setContentsMargins(0, 0, 0, afterRow);
    column->setSpacing(lineSpacing);
    column->addWidget(kvRow(utf16(row.label), utf16(row.value), contentWidth));
    column->addWidget(sourceView(row.source, contentWidth));
    return stack;
}

ZOLShellLabel* sourceView(const SourceLine& line, int width)
{
    auto* label = wrappingLabel(utf16(line.text), 9, QFont::Normal, OstrelStyle::muted, width);
    label->setMaximumLines(mostLines);
    label->setToolTip(plainToolTip(utf16(line.toolTip)));
    return label;
}

} // namespace ostrel
