// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Image.h"

#include <cstdint>

namespace ostrel {

/// The product's mark in the middle of so many pixels, in that ink (0xRRGGBB), fitted to them: its square's
/// sides fall on whole ones, and no line is thinner than one. Where the square would leave no room inside,
/// its glyph stands alone; empty without a pixel. Any thread. Drawn without the toolkit, whose painter alone
/// would cost a program in the background half a megabyte.
[[nodiscard]] platform::Image barMark(int width, int height, std::uint32_t ink);

} // namespace ostrel
