// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/PopoverShadow.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <QPainter>

namespace platform {

namespace {

constexpr double darkest = 0.34;

/// How far a point lies outside of a rectangle with round corners; negative inside. From the rectangle's
/// middle, in one quarter.
double outside(double x, double y, double halfWidth, double halfHeight, double radius)
{
    const double dx = x - (halfWidth - radius), dy = y - (halfHeight - radius);
    return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0) - radius;
}

} // namespace

double PopoverShadow::darkness(double distance) const
{
    // Begins as far inside as the shadow is lower, so that it is darkest where the popover's lower edge is.
    const double left = std::clamp(1 - (distance + drop) / margin, 0.0, 1.0);
    return darkest * left * left * left;
}

QImage PopoverShadow::image(double ratio) const
{
    const double side = corner() * 2 + 1;
    const int pixels = static_cast<int>(std::lround(corner() * ratio)) * 2 + 1;
    const double half = side / 2 - margin;
    QImage shadow(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    for (int row = 0; row < pixels; ++row) {
        auto* line = reinterpret_cast<QRgb*>(shadow.scanLine(row));
        const double y = (row + 0.5) * side / pixels - side / 2 - drop;
        for (int column = 0; column < pixels; ++column) {
            const double x = (column + 0.5) * side / pixels - side / 2;
            const double dark = darkness(outside(std::abs(x), std::abs(y), half, half, radius));
            line[column] = qRgba(0, 0, 0, static_cast<int>(std::lround(dark * 255)));
        }
    }
    return shadow;
}

void PopoverShadow::draw(QPainter& painter, const QImage& image, const QSize& window) const
{
    // In pixels, so that no seam falls inside of one.
    const double ratio = painter.device()->devicePixelRatioF();
    const int end = image.width() / 2;
    const QSize size(static_cast<int>(std::lround(window.width() * ratio)),
        static_cast<int>(std::lround(window.height() * ratio)));
    struct Part {
        int from, length, to, stretched;
    };
    const auto parts = [end](int whole) {
        return std::array { Part { 0, end, 0, end }, Part { end, 1, end, whole - end * 2 },
            Part { end + 1, end, whole - end, end } };
    };
    painter.save();
    painter.scale(1 / ratio, 1 / ratio);
    const auto columns = parts(size.width());
    const auto rows = parts(size.height());
    for (const Part& row : rows)
        for (const Part& column : columns)
            if (&row != &rows[1] || &column != &columns[1]) // the popover itself stands on the middle
                painter.drawImage(QRect(column.to, row.to, column.stretched, row.stretched), image,
                    QRect(column.from, row.from, column.length, row.length));
    painter.restore();
}

} // namespace platform
