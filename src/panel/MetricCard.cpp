// SPDX-License-Identifier: Apache-2.0
#include "panel/MetricCard.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/Utf8.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "panel/LiveRegistry.h"

#include <QPainter>
#include <QVBoxLayout>

#include <cmath>
#include <string>

namespace ostrel {

namespace {

constexpr int endInset = 14;
constexpr int sideInset = 12;
constexpr int spacing = 9;
constexpr double plateRadius = 10;
constexpr int cardGap = 10;

/// Whole points that hold a length.
int wholePoints(double length) { return static_cast<int>(std::ceil(length)); }

} // namespace

MetricCard::MetricCard(const MetricText& text, double width, LiveRegistry& live, QWidget* parent)
    : QWidget(parent)
    , width_(width)
{
    setAccessibleRole(*this, QAccessible::Grouping);
    setAccessibleName(utf16(text.title));
    setToolTip(plainToolTip(utf16(text.toolTip)));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(sideInset, endInset, sideInset, endInset);
    column->setSpacing(spacing);
    const int room = static_cast<int>(width) - 2 * sideInset;
    const auto add = [&](const std::string& words, double size, QFont::Weight weight,
                         const ThemedColor& color, std::string_view key) {
        auto* label = fixedLabel(utf16(words), size, weight, color, room);
        if (!key.empty())
            live.add(std::string(key), label);
        column->addWidget(label);
    };
    add(text.title, 9, QFont::Medium, OstrelStyle::muted, {});
    add(text.value, 24, QFont::Medium, OstrelStyle::ink, text.valueKey);
    add(text.detail, 9, QFont::Normal, OstrelStyle::muted, text.detailKey);
    setFixedSize(wholePoints(width), column->sizeHint().height());
}

void MetricCard::placeAt(double left)
{
    left_ = left;
    const int whole = static_cast<int>(std::floor(left));
    // The texts begin at a whole point, and never nearer to the edge.
    const int before = left > whole ? sideInset + 1 : sideInset;
    layout()->setContentsMargins(before, endInset, 0, endInset);
    setFixedWidth(wholePoints(left + width_) - whole);
    move(whole, 0);
}

QRectF MetricCard::plate() const { return { left_, 0, width_, static_cast<double>(height()) }; }

void MetricCard::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRectF here = plate().translated(-x(), 0);
    fillRounded(painter, snapped(painter, here), plateRadius, OstrelStyle::fill.in(appearanceOf(*this)));
}

QWidget* metricCards(std::span<const MetricText> texts, int width, LiveRegistry& live)
{
    auto* row = new QWidget;
    const auto count = static_cast<double>(texts.size());
    const double each = (width - cardGap * (count - 1)) / count;
    int height = 0;
    double left = 0;
    for (const MetricText& text : texts) {
        auto* card = new MetricCard(text, each, live, row);
        card->placeAt(left);
        height = card->height();
        left += each + cardGap;
    }
    row->setFixedSize(width, height);
    return row;
}

} // namespace ostrel
