// SPDX-License-Identifier: Apache-2.0
#include "history/OstrelHistoryView.h"

#include "design/Accessibility.h"
#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/Utf8.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPen>
#include <QPolygonF>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <utility>

namespace ostrel {

namespace {

constexpr std::array gridShares { 0.2, 0.5, 0.8 }; ///< of the height
constexpr double gridWidth = 0.5;
constexpr double lineWidth = 1.8;
constexpr std::size_t stripSteps = 12; ///< of the line that are drawn at once
constexpr double dashOn = 2;
constexpr double dashOff = 3;
constexpr double dotRadius = 2;
constexpr double noteSize = 10;
constexpr double noteX = 8;
constexpr double noteRise = 6; ///< from the middle up to the note's top

/// As far as the clock reaches that counts nanoseconds: 285 years to either side.
constexpr std::int64_t furthestMinute = 150'000'000;

std::optional<ClockTime> localTime(std::int64_t minute)
{
    if (minute < -furthestMinute || minute > furthestMinute)
        return std::nullopt;
    return localClockTime(std::chrono::system_clock::time_point(std::chrono::minutes(minute)));
}

/// A sample that isn't a number equals another such one, else it would be drawn anew for ever.
bool sameSamples(const std::vector<double>& a, const std::vector<double>& b)
{
    return std::ranges::equal(
        a, b, [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); });
}

void drawGrid(QPainter& painter, double width, double height, const QColor& color)
{
    for (const double share : gridShares)
        painter.fillRect(crisp(painter, QRectF(0, share * height - gridWidth / 2, width, gridWidth)), color);
}

void drawNote(QPainter& painter, double height, const QColor& color)
{
    const QFont font = OstrelStyle::mono(noteSize);
    painter.setFont(font);
    painter.setPen(color);
    const double baseline = height / 2 - noteRise + QFontMetricsF(font).ascent();
    painter.drawText(QPointF(noteX, baseline), "empty · waiting for samples");
}

void drawLine(QPainter& painter, const std::vector<HistoryGraph::Point>& points, double width, double height,
    const QColor& color)
{
    if (points.size() < 2)
        return;
    painter.setPen(QPen(color, lineWidth, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
    // For each row of pixels the toolkit looks through all edges that cross it, so strips of the line take a
    // fraction of the time of a whole one with many peaks. Each is cut out of a line that goes on beyond it.
    QPolygonF strip;
    for (std::size_t first = 0; first + 1 < points.size(); first += stripSteps) {
        const std::size_t last = std::min(first + stripSteps, points.size() - 1);
        std::size_t from = first;
        while (from > 0 && points[from].x > points[first].x - lineWidth)
            --from;
        std::size_t to = last;
        while (to + 1 < points.size() && points[to].x < points[last].x + lineWidth)
            ++to;
        strip.clear();
        for (std::size_t at = from; at <= to; ++at)
            strip.append({ points[at].x, points[at].y });
        const double left = first > 0 ? points[first].x : 0;
        const double right = last + 1 < points.size() ? points[last].x : width;
        painter.setClipRect(crisp(painter, QRectF(left, 0, right - left, height)));
        painter.drawPolyline(strip);
    }
    painter.setClipping(false);
}

void drawBoundary(QPainter& painter, double x, double width, double height, const QColor& color)
{
    const double thick = hairline(painter);
    // Whole inside the view also where the newest sample is the only one of this run.
    const double left = std::clamp(x - thick / 2, 0.0, std::max(0.0, width - thick));
    const int dashes = static_cast<int>(std::ceil(height / (dashOn + dashOff)));
    for (int n = 0; n < dashes; ++n) {
        const double top = n * (dashOn + dashOff);
        painter.fillRect(crisp(painter, QRectF(left, top, thick, std::min(dashOn, height - top))), color);
    }
}

} // namespace

OstrelHistoryView::OstrelHistoryView(std::vector<double> samples, std::vector<std::int64_t> minutes,
    std::string caption, qreal width, qreal height, std::optional<std::size_t> liveBoundary)
    : samples_(std::move(samples))
    , minutes_(std::move(minutes))
    , caption_(std::move(caption))
    , width_(width)
    , height_(height)
    , liveBoundary_(liveBoundary)
    , tip_(*this, [this](QPointF at) {
        return utf16(HistoryGraph::hoverText(caption_, samples_, minutes_, at.x(), width_, localTime));
    })
{
    setFixedSize(static_cast<int>(std::ceil(width_)), static_cast<int>(std::ceil(height_)));
    setAccessibleRole(*this, QAccessible::Graphic);
    measure();
}

void OstrelHistoryView::apply(
    std::vector<double> samples, std::vector<std::int64_t> minutes, std::optional<std::size_t> liveBoundary)
{
    const bool same = liveBoundary == liveBoundary_ && sameSamples(samples, samples_);
    minutes_ = std::move(minutes);
    if (!same) {
        samples_ = std::move(samples);
        liveBoundary_ = liveBoundary;
        measure();
        update();
    }
    tip_.renew();
}

void OstrelHistoryView::measure()
{
    line_ = HistoryGraph::line(samples_, width_, height_);
    setAccessibleName(utf16(HistoryGraph::accessibilityLabel(caption_, samples_.size(), liveBoundary_)));
}

void OstrelHistoryView::paintEvent(QPaintEvent*)
{
    const auto mode = appearanceOf(*this);
    const QColor muted = qColor(OstrelStyle::muted.in(mode));
    QPainter painter(this);
    drawGrid(painter, width_, height_, qColor(OstrelStyle::hair.in(mode)));
    if (line_.empty())
        return drawNote(painter, height_, muted);
    painter.setRenderHint(QPainter::Antialiasing);
    drawLine(painter, line_, width_, height_, qColor(OstrelStyle::ink.in(mode)));
    if (const auto x = HistoryGraph::boundaryX(liveBoundary_, samples_.size(), width_))
        drawBoundary(painter, *x, width_, height_, muted);
    painter.setPen(Qt::NoPen);
    painter.setBrush(qColor(OstrelStyle::red.in(mode)));
    painter.drawEllipse(QPointF(line_.back().x, line_.back().y), dotRadius, dotRadius);
}

} // namespace ostrel
