// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLAppMarkView.h"

#include "design/Accessibility.h"
#include "design/Keys.h"
#include "design/Paint.h"
#include "design/Utf8.h"
#include "design/ZOLMiniAppTokens.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPen>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ostrel {

namespace {

constexpr double ringInset = 1;
constexpr double ringRadius = 8;
constexpr double mitreLimit = 4;

} // namespace

const Color ZOLAppMarkView::ink = zolHex(ZOLMiniAppTokens::N1.component.find("logo-ink").value_or("#202124"));
const Color ZOLAppMarkView::signal
    = zolHex(ZOLMiniAppTokens::N1.component.find("logo-signal").value_or("#db303d"));

ZOLAppMarkView::ZOLAppMarkView(ZOLAppMark mark, double size, QWidget* parent)
    : QWidget(parent)
    , mark_(mark)
    , size_(size)
{
    setAccessibleRole(*this, QAccessible::Graphic);
    setFixedSize(sizeHint());
    setMark(mark);
}

void ZOLAppMarkView::setMark(ZOLAppMark mark)
{
    mark_ = mark;
    setAccessibleName(utf16(ZOLAppMarks::label(mark)));
    update();
}

void ZOLAppMarkView::setOnClick(std::function<void()> onClick)
{
    onClick_ = std::move(onClick);
    setFocusPolicy(onClick_ ? Qt::TabFocus : Qt::NoFocus);
    if (onClick_)
        setCursor(Qt::PointingHandCursor);
    else
        unsetCursor();
}

QSize ZOLAppMarkView::sizeHint() const
{
    const int side = static_cast<int>(std::ceil(size_));
    return { side, side };
}

void ZOLAppMarkView::draw(QPainter& painter, ZOLAppMark mark, const QRectF& rect, bool mono)
{
    const double scale = std::min(rect.width(), rect.height()) / ZOLAppMarks::canvas;
    if (scale <= 0)
        return;
    const double side = ZOLAppMarks::canvas * scale;
    const QPointF origin(rect.x() + (rect.width() - side) / 2, rect.y() + (rect.height() - side) / 2);
    QPen pen(mono ? QColor(Qt::black) : qColor(ink), ZOLAppMarks::strokeWidth * scale, Qt::SolidLine,
        Qt::FlatCap, Qt::MiterJoin);
    pen.setMiterLimit(mitreLimit);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.strokePath(bezier(ZOLAppMarks::square(), scale, origin), pen);
    painter.strokePath(bezier(ZOLAppMarks::glyph(mark), scale, origin), pen);
    if (!mono)
        painter.fillPath(bezier(ZOLAppMarks::signal(), scale, origin), qColor(signal));
    painter.restore();
}

StillImage ZOLAppMarkView::image(ZOLAppMark mark, double size, bool mono, double ratio)
{
    StillImage still = StillImage::sized(size, size, ratio);
    still.isTemplate = mono;
    still.accessibilityDescription = utf16(ZOLAppMarks::label(mark));
    QPainter painter(&still.image);
    draw(painter, mark, QRectF(0, 0, size, size), mono);
    return still;
}

QPainterPath ZOLAppMarkView::bezier(std::span<const ZOLAppMarkCommand> commands, double scale, QPointF origin)
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

void ZOLAppMarkView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    draw(painter, mark_, QRectF(rect()), false);
    if (onClick_ && hasFocus())
        drawFocusRing(painter, QRectF(rect()), ringInset, ringRadius, ink);
}

void ZOLAppMarkView::mousePressEvent(QMouseEvent* event)
{
    if (onClick_ && event->button() == Qt::LeftButton)
        onClick_();
    else
        QWidget::mousePressEvent(event);
}

void ZOLAppMarkView::keyPressEvent(QKeyEvent* event)
{
    if (onClick_ && isPressKey(*event))
        onClick_();
    else
        QWidget::keyPressEvent(event);
}

} // namespace ostrel
