// SPDX-License-Identifier: Apache-2.0
#include "panel/SlimScrollBar.h"

#include "design/Appearance.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

constexpr double thumbWidth = 4;
constexpr double shortestThumb = 28;
/// Between the content and the bar.
constexpr int gap = 3;

} // namespace

SlimScrollBar::SlimScrollBar(QScrollArea& area)
    : QWidget(area.parentWidget())
    , area_(area)
{
    area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area.installEventFilter(this);
    const QScrollBar* const bar = area.verticalScrollBar();
    connect(bar, &QScrollBar::rangeChanged, this, [this] { follow(); });
    connect(bar, &QScrollBar::valueChanged, this, [this] { update(); });
    follow();
}

bool SlimScrollBar::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize)
        follow();
    return false;
}

void SlimScrollBar::follow()
{
    setGeometry(area_.geometry().right() + 1 + gap, area_.y(), thickness, area_.height());
    setVisible(area_.verticalScrollBar()->maximum() > 0);
    update();
}

SlimScrollBar::Thumb SlimScrollBar::thumb() const
{
    const QScrollBar& bar = *area_.verticalScrollBar();
    const double whole = bar.maximum() + bar.pageStep();
    const double length
        = std::min<double>(height(), std::max(shortestThumb, height() * bar.pageStep() / whole));
    const double room = height() - length;
    return { bar.maximum() > 0 ? room * bar.value() / bar.maximum() : 0, length };
}

void SlimScrollBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const bool lively = hovering_ || grip_;
    const Color color = (lively ? OstrelStyle::muted : OstrelStyle::soft).in(appearanceOf(*this));
    const Thumb shown = thumb();
    const QRectF place((width() - thumbWidth) / 2, shown.top, thumbWidth, shown.length);
    fillRounded(painter, place, thumbWidth / 2, color);
}

void SlimScrollBar::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const double y = event->position().y();
    const Thumb shown = thumb();
    if (y >= shown.top && y <= shown.top + shown.length) {
        grip_ = y - shown.top;
        update();
    } else {
        area_.verticalScrollBar()->triggerAction(
            y < shown.top ? QAbstractSlider::SliderPageStepSub : QAbstractSlider::SliderPageStepAdd);
    }
}

void SlimScrollBar::mouseMoveEvent(QMouseEvent* event)
{
    const double room = height() - thumb().length;
    if (!grip_ || room <= 0)
        return;
    QScrollBar& bar = *area_.verticalScrollBar();
    bar.setValue(static_cast<int>(std::lround((event->position().y() - *grip_) / room * bar.maximum())));
}

void SlimScrollBar::mouseReleaseEvent(QMouseEvent*)
{
    grip_.reset();
    update();
}

void SlimScrollBar::enterEvent(QEnterEvent*)
{
    hovering_ = true;
    update();
}

void SlimScrollBar::leaveEvent(QEvent*)
{
    hovering_ = false;
    update();
}

} // namespace ostrel
