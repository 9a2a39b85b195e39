// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"

namespace ostrel {

/// Where a hint of that size stands, as its lower left corner: hanging from the bar item with a small gap,
/// centred below it but well inside the display's free area. Where the bar is at the bottom there is no room
/// below, and it stands above the item instead. It never covers the desktop's bars where it can be helped.
[[nodiscard]] platform::Point hintPlace(
    double width, double height, const platform::Rect& item, const platform::Rect& visible);

} // namespace ostrel
