// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

namespace platform {

/// A small picture as plain pixels, row by row from the top, each 0xAARRGGBB with straight alpha.
struct Image {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    bool operator==(const Image&) const = default;
};

} // namespace platform
