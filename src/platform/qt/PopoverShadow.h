// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QSize>

class QPainter;

namespace platform {

/// The soft shadow around a popover, which stands a little lower than the popover itself. Lengths in points.
struct PopoverShadow {
    double margin = 24; ///< what it takes on each side; nothing is left of it at the end
    double radius = 0; ///< of the popover's corners
    double drop = 4; ///< how much lower it stands

    /// How dark it is at a distance outside of its own outline: 1 is black.
    [[nodiscard]] double darkness(double distance) const;

    /// The smallest picture of a whole shadow: its four corners, and one point between them that is
    /// stretched. `ratio` is the number of pixels in a point.
    [[nodiscard]] QImage image(double ratio) const;

    /// Draws such a picture around a popover, on a window of that size, the margins included.
    void draw(QPainter& painter, const QImage& image, const QSize& window) const;

private:
    /// The side of the picture's corners.
    [[nodiscard]] double corner() const { return margin + radius + drop; }
};

} // namespace platform
