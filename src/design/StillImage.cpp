// SPDX-License-Identifier: Apache-2.0
#include "design/StillImage.h"

#include "design/Paint.h"

#include <QPainter>

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace ostrel {

StillImage StillImage::sized(double width, double height, double ratio)
{
    const auto pixels = [ratio](double points) { return static_cast<int>(std::ceil(points * ratio)); };
    StillImage still;
    still.image = QImage(pixels(width), pixels(height), QImage::Format_ARGB32_Premultiplied);
    still.image.setDevicePixelRatio(ratio);
    still.image.fill(Qt::transparent);
    return still;
}

QImage tinted(const StillImage& still, const Color& color)
{
    QImage image = still.image;
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(QRectF(QPointF(), image.deviceIndependentSize()), qColor(color));
    return image;
}

platform::Image platformImage(const QImage& image)
{
    const QImage straight = image.convertToFormat(QImage::Format_ARGB32);
    platform::Image plain { .width = straight.width(), .height = straight.height(), .pixels = {} };
    plain.pixels.reserve(static_cast<std::size_t>(plain.width) * static_cast<std::size_t>(plain.height));
    for (int y = 0; y < plain.height; ++y) {
        const auto* row = reinterpret_cast<const std::uint32_t*>(straight.constScanLine(y));
        plain.pixels.insert(plain.pixels.end(), row, row + plain.width);
    }
    return plain;
}

} // namespace ostrel
