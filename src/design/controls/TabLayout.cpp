// SPDX-License-Identifier: Apache-2.0
#include "design/controls/TabLayout.h"

#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/ShellRow.h"
#include "design/controls/ShellViews.h"
#include "design/controls/ZOLShellLabel.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

#include <utility>

namespace ostrel {

namespace {

constexpr int pairSpacing = 8;
constexpr int pairResistance = 750;

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

ZOLShellLabel* fixedLabel(
    const QString& text, double size, QFont::Weight weight, const ThemedColor& color, int width)
{
    auto* label = elidedLabel(text, size, weight, color);
    label->setFixedSize(width, label->minimumSizeHint().height());
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

QWidget* flexSpacer() { return ZOLAppShellStyle::spacer(); }

QWidget* viewRow(std::initializer_list<QWidget*> views, int width, int spacing)
{
    auto* holder = new QWidget;
    holder->setFixedWidth(width);
    auto* across = new QHBoxLayout(holder);
    across->setContentsMargins(0, 0, 0, 0);
    across->setSpacing(spacing);
    for (QWidget* view : views)
        across->addWidget(view ? view : flexSpacer());
    return holder;
}

ZOLShellLabel* section(const QString& title, int width)
{
    return fixedLabel(title, 9, QFont::DemiBold, OstrelStyle::muted, width);
}

OstrelButton* actionButton(const QString& title, int width, std::function<void()> handler, int height)
{
    return new OstrelButton(title, width, std::move(handler), height);
}

PanelBox::PanelBox(int width, QWidget* parent)
    : QWidget(parent)
    , column_(new QVBoxLayout(this))
{
    setFixedWidth(width);
    column_->setContentsMargins(sideInset, endInset, sideInset, endInset);
    column_->setSpacing(spacing);
}

void PanelBox::add(QWidget* view)
{
    // The layout would centre a view of limited width.
    const bool limited = view->maximumWidth() < QWIDGETSIZE_MAX;
    column_->addWidget(view, 0, limited ? Qt::AlignLeft : Qt::Alignment());
}

void PanelBox::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    fillRounded(painter, QRectF(rect()), OstrelStyle::radius, OstrelStyle::fill.in(appearanceOf(*this)));
}

KeyValueRow::KeyValueRow(const QString& label, const QString& value, int width, QWidget* parent)
    : QWidget(parent)
    , label_(elidedLabel(label, 11, QFont::Normal, OstrelStyle::muted))
    , value_(elidedLabel(value, 11, QFont::DemiBold, OstrelStyle::ink))
{
    setFixedWidth(width);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    value_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* row = new ShellRow(this, pairSpacing);
    row->add(label_, pairResistance);
    row->add(flexSpacer());
    row->add(value_, pairResistance);
}

KeyValueRow* kvRow(const QString& label, const QString& value, int width)
{
    return new KeyValueRow(label, value, width);
}

} // namespace ostrel
