// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLAppMarkPainter.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPen>

#include <algorithm>

namespace ostrel {

namespace {

QPainterPath bezier(std::span<const ZOLAppMarkCommand> commands, double scale, QPointF origin)
{
    const auto at = [&](double x, double y) { return origin + QPointF(x * scale, y * scale); };
    QPainterPath path;
    for (const ZOLAppMarkCommand& command : commands) {
        switch (command.kind) {
        case ZOLAppMarkCommand::Kind::move:
            path.moveTo(at(command.x, command.y));
            break;
        case ZOLAppMarkCommand::Kind::line:
            path.lineTo(at(command.x, command.y));
            break;
        case ZOLAppMarkCommand::Kind::curve:
            path.cubicTo(at(command.x1, command.y1), at(command.x2, command.y2), at(command.x, command.y));
            break;
        case ZOLAppMarkCommand::Kind::close:
            path.closeSubpath();
            break;
        }
    }
    return path;
}

} // namespace

void drawAppMark(QPainter& painter, const QRectF& rect, const QColor& ink, const QColor& signal)
{
    const double scale = std::min(rect.width(), rect.height()) / ZOLAppMarkPath::canvas;
    const double side = ZOLAppMarkPath::canvas * scale;
    const QPointF origin(rect.x() + (rect.width() - side) / 2, rect.y() + (rect.height() - side) / 2);
    QPen pen(ink, ZOLAppMarkPath::strokeWidth * scale, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    pen.setMiterLimit(4);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.strokePath(bezier(ZOLAppMarkPath::square(), scale, origin), pen);
    painter.strokePath(bezier(ZOLAppMarkPath::glyph(), scale, origin), pen);
    if (signal.isValid())
        painter.fillPath(bezier(ZOLAppMarkPath::signal(), scale, origin), signal);
    painter.restore();
}

platform::Image appMarkImage(int size, const QColor& ink, const QColor& signal)
{
    QImage canvas(size, size, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    QPainter painter(&canvas);
    drawAppMark(painter, QRectF(0, 0, size, size), ink, signal);
    painter.end();
    const QImage straight = canvas.convertToFormat(QImage::Format_ARGB32);
    platform::Image image { .width = size, .height = size, .pixels = {} };
    image.pixels.reserve(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            image.pixels.push_back(straight.pixel(x, y));
    return image;
}

} // namespace ostrel
