// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Appearance.h"
#include "design/Paint.h"

#include <QColor>
#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QWidget>

#include <cmath>

/// The view as it looks at that scale, on the ground of its own appearance.
[[nodiscard]] inline QImage rendered(QWidget& view, double ratio = 1)
{
    const auto pixels = [ratio](int points) { return static_cast<int>(std::ceil(points * ratio)); };
    QImage image(pixels(view.width()), pixels(view.height()), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(view.palette().color(QPalette::Window));
    view.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

/// Whether a pixel has that colour, to within a step of each channel.
[[nodiscard]] inline bool near(QRgb pixel, const ostrel::Color& color, int steps = 2)
{
    const QRgb other = ostrel::qColor(color).rgba();
    const auto close = [steps](int a, int b) { return std::abs(a - b) <= steps; };
    return close(qRed(pixel), qRed(other)) && close(qGreen(pixel), qGreen(other))
        && close(qBlue(pixel), qBlue(other)) && close(qAlpha(pixel), qAlpha(other));
}
