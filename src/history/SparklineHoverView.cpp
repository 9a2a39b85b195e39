// SPDX-License-Identifier: Apache-2.0
#include "history/SparklineHoverView.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/Utf8.h"

#include <QFontMetricsF>
#include <QPainter>

#include <utility>

namespace ostrel {

namespace {

constexpr double noteSize = 9;

void drawNote(QPainter& painter, double height, const QColor& color)
{
    const QFont font = OstrelStyle::mono(noteSize);
    const QFontMetricsF metrics(font);
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(
        QPointF(0, (height - metrics.height()) / 2 + metrics.ascent()), utf16(Sparkline::noSamples));
}

} // namespace

SparklineHoverView::SparklineHoverView(
    std::vector<int> samples, int width, int height, std::string caption, platform::Workspace& workspace)
    : samples_(std::move(samples))
    , bars_(Sparkline::bars(samples_, width, height))
    , workspace_(workspace)
    , displayOptions_(workspace_.observeDisplayOptions([this] { update(); }))
    , tip_(*this, [this](QPointF at) {
        return utf16(Sparkline::hoverText(caption_, samples_, at.x(), this->width()));
    })
{
    setFixedSize(width, height);
    setAccessibleRole(*this, QAccessible::StaticText);
    if (samples_.empty()) {
        setAccessibleName(utf16(Sparkline::noSamples));
        return;
    }
    caption_ = std::move(caption);
    setAccessibleName(utf16(caption_));
    setAccessibleValue(*this, utf16(Sparkline::accessibilityValue(samples_)));
}

SparklineHoverView::~SparklineHoverView() = default;

void SparklineHoverView::paintEvent(QPaintEvent*)
{
    const auto mode = appearanceOf(*this);
    QPainter painter(this);
    if (bars_.empty())
        return drawNote(painter, height(), qColor(OstrelStyle::muted.in(mode)));
    Color faint = OstrelStyle::ink.in(mode);
    faint.alpha = Sparkline::barAlpha;
    const bool caps = workspace_.accessibilityDisplayShouldDifferentiateWithoutColor();
    for (const auto& [x, wide, tall, cap] : bars_) {
        const double top = height() - tall;
        painter.fillRect(crisp(painter, QRectF(x, top, wide, tall)), qColor(faint));
        if (caps && cap > 0)
            painter.fillRect(crisp(painter, QRectF(x, top, wide, cap)), qColor(OstrelStyle::ink.in(mode)));
    }
}

QWidget* makeSparkline(const std::vector<int>& samples, int width, int height, std::string caption,
    platform::Workspace& workspace)
{
    return new SparklineHoverView(samples, width, height, std::move(caption), workspace);
}

} // namespace ostrel
