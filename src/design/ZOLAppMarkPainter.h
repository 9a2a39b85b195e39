// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ZOLAppMark.h"
#include "platform/Image.h"

#include <QColor>
#include <QRectF>

class QPainter;

namespace ostrel {

/// Draws the mark as large as fits into the rectangle, centred. With a valid `signal` the tab is filled in
/// that colour; without one the mark has a single colour and no filled part.
void drawAppMark(QPainter& painter, const QRectF& rect, const QColor& ink, const QColor& signal);

/// The mark as a picture of `size` by `size` pixels.
[[nodiscard]] platform::Image appMarkImage(int size, const QColor& ink, const QColor& signal);

} // namespace ostrel
