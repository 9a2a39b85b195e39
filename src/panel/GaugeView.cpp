// SPDX-License-Identifier: Apache-2.0
#include "panel/GaugeView.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/Utf8.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPen>
#include <QShowEvent>

#include <cmath>
#include <utility>

namespace ostrel {

namespace {

constexpr double valueSize = 17;
constexpr double captionSize = 8;
constexpr double captionKerning = 0.5;
constexpr int topOfRing = 90 * 16; ///< the toolkit counts sixteenths of a degree
constexpr double sixteenths = 16;

/// Grey until it is told.
constexpr ThemedColor unset = OstrelStyle::soft;

void drawCentred(QPainter& painter, const QFont& font, const std::string& words, double middle, double bottom)
{
    const QFontMetricsF metrics(font);
    const QString text = utf16(words);
    painter.setFont(font);
    painter.drawText(QPointF(middle - metrics.horizontalAdvance(text) / 2, bottom - metrics.descent()), text);
}

} // namespace

GaugeView::GaugeView(double diameter, const MotionServices& services)
    : diameter_(diameter)
    , services_(services)
    , visibility_(*this, services_.occlusion, [this] { resume(); })
    , displayOptions_(services_.workspace.observeDisplayOptions([this] { displayOptionsChanged(); }))
{
    look_.color = unset;
    const int side = static_cast<int>(std::ceil(diameter_));
    setFixedSize(side, side);
    setAccessibleRole(*this, QAccessible::ProgressBar);
}

GaugeView::~GaugeView() = default;

void GaugeView::update(double pct, const std::string& caption, const ThemedColor& color,
    std::optional<double> from, std::string_view level)
{
    const double target = GaugeRules::shown(pct);
    level_ = level;
    setAccessibleName(utf16(caption));
    setAccessibleLevel(*this, target, utf16(GaugeRules::valueText("", target)));
    motion_.stand(from.value_or(pct));
    motion_.setOut(target, mayMove());
    Look look = look_;
    look.caption = caption;
    look.color = color;
    showLook(std::move(look));
    resume();
}

bool GaugeView::mayMove() const { return !services_.reduceMotion() && !services_.selfTest; }

void GaugeView::displayOptionsChanged()
{
    if (!mayMove())
        motion_.arrive();
    showLook(look_);
    resume();
}

void GaugeView::showLook(Look look)
{
    look.pct = motion_.displayed();
    look.mark = GaugeRules::levelMark(
        level_, services_.workspace.accessibilityDisplayShouldDifferentiateWithoutColor());
    if (look == look_)
        return;
    look_ = std::move(look);
    QWidget::update();
}

void GaugeView::resume()
{
    animTimer_.reset();
    if (motion_.moving() && visibility_.visible())
        animTimer_
            = services_.runLoop.scheduleRepeating(platform::Seconds(GaugeRules::frame), [this] { fire(); });
}

void GaugeView::fire()
{
    const bool goesOn = motion_.step();
    showLook(look_);
    if (!goesOn)
        animTimer_.reset();
}

void GaugeView::paintEvent(QPaintEvent*)
{
    const auto mode = appearanceOf(*this);
    const GaugeRules::Geometry place = GaugeRules::geometry(diameter_);
    const QRectF ring(
        place.centre - place.radius, place.centre - place.radius, 2 * place.radius, 2 * place.radius);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(qColor(OstrelStyle::hair.in(mode)), GaugeRules::ringWidth));
    painter.drawEllipse(ring);
    if (const double sweep = GaugeRules::sweep(look_.pct); sweep > 0) {
        painter.setPen(
            QPen(qColor(look_.color.in(mode)), GaugeRules::ringWidth, Qt::SolidLine, Qt::RoundCap));
        painter.drawArc(ring, topOfRing, -static_cast<int>(std::lround(sweep * sixteenths)));
    }
    painter.setPen(qColor(OstrelStyle::ink.in(mode)));
    drawCentred(painter, OstrelStyle::mono(valueSize, QFont::DemiBold),
        GaugeRules::valueText(look_.mark, look_.pct), place.centre, place.valueBottom);
    QFont small = OstrelStyle::mono(captionSize);
    small.setLetterSpacing(QFont::AbsoluteSpacing, captionKerning);
    painter.setPen(qColor(OstrelStyle::muted.in(mode)));
    drawCentred(painter, small, look_.caption, place.centre, place.captionBottom);
}

void GaugeView::showEvent(QShowEvent* event)
{
    if (!event->spontaneous())
        visibility_.attach();
    resume();
}

void GaugeView::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous())
        visibility_.detach();
    resume();
}

} // namespace ostrel
