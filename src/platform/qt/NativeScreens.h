// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"

#include <span>
#include <vector>

#include <QPoint>

namespace platform {

/// A rectangle as the X server counts it: in pixels from the display's upper left, y growing downward.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const PixelRect&) const = default;
};

/// One screen in both ways of counting.
struct NativeScreen {
    PixelRect pixels;
    Rect frame; ///< in global coordinates
    double ratio = 1; ///< pixels a point
};

/// The screens as they are now, the primary one first; none before the application object.
[[nodiscard]] std::vector<NativeScreen> nativeScreens();

/// The screen that holds the pixel, or the one nearest to it; null without screens.
[[nodiscard]] const NativeScreen* screenAt(std::span<const NativeScreen> screens, double x, double y);
/// The screen that holds the global point, or the one nearest to it; null without screens.
[[nodiscard]] const NativeScreen* screenOf(std::span<const NativeScreen> screens, Point point);

/// A pixel's upper left corner in global coordinates; the origin without screens.
[[nodiscard]] Point globalPoint(std::span<const NativeScreen> screens, double x, double y);
/// A rectangle that begins on one screen and is measured there.
[[nodiscard]] Rect globalRect(std::span<const NativeScreen> screens, const PixelRect& pixels);

/// A global point as the toolkit counts: in points, y growing downward.
[[nodiscard]] QPoint toolkitPoint(Point point);
/// The way back.
[[nodiscard]] Point fromToolkit(QPoint point);

} // namespace platform
