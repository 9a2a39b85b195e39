// SPDX-License-Identifier: Apache-2.0
#include "Sheet.h"

#include "design/Appearance.h"
#include "design/Fonts.h"
#include "design/OstrelStyle.h"
#include "design/Paint.h"

#include <QApplication>
#include <QFontMetricsF>

#include <algorithm>
#include <cmath>
#include <memory>

namespace ostrel {

namespace {

constexpr double width = 960;
constexpr double height = 5000;
constexpr double margin = 24;
constexpr double gap = 20;
constexpr double captionHeight = 18;

QImage ground(ZOLThemePolicy::Mode theme, double ratio)
{
    QImage image(static_cast<int>(width * ratio), static_cast<int>(height * ratio),
        QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(qColor(OstrelStyle::bg.in(theme)));
    return image;
}

} // namespace

Sheet::Sheet(ZOLThemePolicy::Mode theme, double ratio)
    : theme_(theme)
    , ratio_(ratio)
    , image_(ground(theme, ratio))
    , painter_(&image_)
    , x_(margin)
    , y_(margin)
{
    ZOLThemePolicy::apply(theme);
}

void Sheet::row()
{
    x_ = margin;
    y_ += rowHeight_;
    rowHeight_ = 0;
}

void Sheet::section(const QString& title)
{
    row();
    y_ += gap / 2;
    text({ margin, y_ }, title, OstrelStyle::mono(14, QFont::DemiBold), OstrelStyle::ink);
    y_ += 24;
    drawRule(painter_, QRectF(margin, y_, width - 2 * margin, 1), OstrelStyle::hair.in(theme_));
    y_ += gap / 2;
}

void Sheet::text(QPointF at, const QString& words, const QFont& font, const ThemedColor& color)
{
    painter_.setFont(font);
    painter_.setPen(qColor(color.in(theme_)));
    painter_.drawText(at + QPointF(0, std::round(QFontMetricsF(font).ascent())), words);
}

QPointF Sheet::place(const QString& caption, QSizeF size)
{
    const QFont font = OstrelStyle::mono(10);
    const double wide = std::max(size.width(), QFontMetricsF(font).horizontalAdvance(caption));
    if (x_ > margin && x_ + wide > width - margin)
        row();
    const QPointF at(x_, y_);
    text(at, caption, font, OstrelStyle::muted);
    x_ += std::ceil(wide) + gap;
    rowHeight_ = std::max(rowHeight_, captionHeight + std::ceil(size.height()) + gap);
    return at + QPointF(0, captionHeight);
}

void Sheet::view(const QString& caption, QWidget* view, const std::function<void(QWidget&)>& prepare)
{
    // A window of its own, so that it has the keyboard when its state asks for that.
    QWidget window;
    view->setParent(&window);
    view->adjustSize();
    view->move(0, 0);
    window.resize(view->size());
    // Away from where the display has its pointer.
    window.move(200, 200);
    window.show();
    QApplication::setActiveWindow(&window);
    QApplication::processEvents();
    // Else the first view of a window has the keyboard.
    window.setFocus();
    if (prepare)
        prepare(*view);
    QImage seen(view->size() * ratio_, QImage::Format_ARGB32_Premultiplied);
    seen.setDevicePixelRatio(ratio_);
    seen.fill(Qt::transparent);
    view->render(&seen, {}, {}, QWidget::DrawChildren);
    painter_.drawImage(place(caption, view->size()), seen);
}

void Sheet::drawing(
    const QString& caption, QSizeF size, const std::function<void(QPainter&, const QRectF&)>& paint)
{
    painter_.save();
    paint(painter_, QRectF(place(caption, size), size));
    painter_.restore();
}

QImage Sheet::finished()
{
    row();
    painter_.end();
    QImage sheet = image_.copy(0, 0, image_.width(), static_cast<int>((y_ + margin) * ratio_));
    sheet.setDevicePixelRatio(ratio_);
    return sheet;
}

} // namespace ostrel
