// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/qt/GlobalPoints.h"
#include "platform/qt/StrutLayout.h"

#include <optional>
#include <span>

namespace platform {

/// Where an item most likely stands that no host tells the place of, in global coordinates: around the last
/// press within the bar's strip, else at the right end of a bar, else at the top right of the primary
/// display. `length` in points; nothing for a square.
[[nodiscard]] Rect guessedFrame(std::span<const DisplayPlace> displays, const StrutLayout& bars,
    std::optional<Point> lastPress, std::optional<double> length);

/// The upper left corner, in global coordinates, of a menu that hangs from an item: below it, or above it in
/// the lower half of its screen.
[[nodiscard]] Point menuCorner(const Rect& item, const Rect& screen, double menuHeight);

} // namespace platform
