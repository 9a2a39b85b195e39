// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Image.h"

#include <cstdint>
#include <span>
#include <vector>

namespace platform {

/// Bars come dark and light: this grey stands at least 3 to 1 against both.
inline constexpr std::uint32_t neutralInk = 0x858a90;
inline constexpr std::uint32_t darkInk = 0x202124;
inline constexpr std::uint32_t lightInk = 0xf2f2f2;

/// The ink that stands out most from a background of 0xRRGGBB pixels.
[[nodiscard]] std::uint32_t inkFor(std::span<const std::uint32_t> background);

/// The picture's pixels for a window that blends: colours multiplied by their alpha.
[[nodiscard]] std::vector<std::uint32_t> premultiplied(const Image& image);

/// The picture on a background of the same size, without alpha. A background of another size is ignored.
[[nodiscard]] std::vector<std::uint32_t> painted(
    const Image& image, std::span<const std::uint32_t> background);

} // namespace platform
