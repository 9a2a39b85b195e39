// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorViews.h"

#include "design/Accessibility.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"

#include <QVBoxLayout>

#include <utility>

namespace ostrel {

namespace {

constexpr int ruleGap = 10;

} // namespace

OstrelButton* janitorButton(const JanitorButton& button, std::function<void()> handler, int height)
{
    auto* view = new OstrelButton(utf16(button.title), button.width, std::move(handler), height);
    view->setActive(button.active);
    view->setEnabled(button.enabled);
    view->setToolTip(plainToolTip(utf16(button.tooltip)));
    view->setObjectName(utf16(button.identifier));
    return view;
}

QWidget* namedRow(std::string_view name, std::initializer_list<QWidget*> views, int width)
{
    QWidget* row = viewRow(views, width);
    setAccessibleRole(*row, QAccessible::Grouping);
    row->setAccessibleName(utf16(name));
    return row;
}

JanitorColumn::JanitorColumn(int width)
    : view_(new QWidget)
    , column_(new QVBoxLayout(view_))
    , width_(width)
{
    view_->setFixedWidth(width);
    column_->setContentsMargins(0, 0, 0, 0);
    column_->setSpacing(0);
}

void JanitorColumn::add(QWidget* view) const { column_->addWidget(view); }

void JanitorColumn::addNarrow(QWidget* view) const { column_->addWidget(view, 0, Qt::AlignLeft); }

void JanitorColumn::gap(int height) const { column_->addSpacing(height); }

void JanitorColumn::rule() const
{
    gap(ruleGap);
    add(separator(width_));
    gap(ruleGap);
}

void JanitorColumn::text(
    std::string_view text, double size, const ThemedColor& color, int lines, QFont::Weight weight) const
{
    if (text.empty())
        return;
    auto* label = wrappingLabel(utf16(text), size, weight, color, width_);
    label->setMaximumLines(lines);
    add(label);
}

void JanitorColumn::status(std::string_view status, std::string_view lastAction) const
{
    gap(6);
    text(status, 11, OstrelStyle::muted, 2);
    text(lastAction, 11, OstrelStyle::ink, 3, QFont::Medium);
}

} // namespace ostrel
