// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Color.h"
#include "platform/Image.h"

#include <QImage>
#include <QString>

namespace ostrel {

/// A drawing that doesn't move.
struct StillImage {
    QImage image; ///< premultiplied, with its device pixel ratio set
    bool isTemplate = false; ///< its shape counts and not its colour: whoever shows it tints it
    QString accessibilityDescription;

    /// An empty, transparent one of `width` by `height` points.
    [[nodiscard]] static StillImage sized(double width, double height, double ratio);
};

/// A template in one colour.
[[nodiscard]] QImage tinted(const StillImage& still, const Color& color);

/// The pixels as a tray takes them.
[[nodiscard]] platform::Image platformImage(const QImage& image);

} // namespace ostrel
