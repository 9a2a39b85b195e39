// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/TrayPaint.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace platform {

namespace {

constexpr std::uint32_t full = 0xff;
constexpr std::array shifts { 16U, 8U, 0U };

std::uint32_t channel(std::uint32_t pixel, unsigned shift) { return (pixel >> shift) & full; }

std::uint32_t mixed(std::uint32_t over, std::uint32_t under, std::uint32_t alpha)
{
    return (over * alpha + under * (full - alpha) + full / 2) / full;
}

/// Relative luminance as the accessibility guidelines for web content define it, 0 to 1.
double luminance(std::uint32_t pixel)
{
    constexpr std::array weights { 0.2126, 0.7152, 0.0722 };
    double sum = 0;
    for (std::size_t at = 0; at < shifts.size(); ++at) {
        const double share = channel(pixel, shifts[at]) / double { full };
        sum += weights[at] * (share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4));
    }
    return sum;
}

/// By the same guidelines, 1 to 21.
double contrast(double one, double other)
{
    return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

} // namespace

std::uint32_t inkFor(std::span<const std::uint32_t> background)
{
    // The mean colour first: bars are near to one colour, and this is asked at each redraw.
    std::array<std::uint64_t, shifts.size()> sums {};
    for (const std::uint32_t pixel : background)
        for (std::size_t at = 0; at < shifts.size(); ++at)
            sums[at] += channel(pixel, shifts[at]);
    std::uint32_t mean = 0;
    for (std::size_t at = 0; at < shifts.size() && !background.empty(); ++at)
        mean |= static_cast<std::uint32_t>(sums[at] / background.size()) << shifts[at];
    const double behind = luminance(mean);
    return contrast(luminance(darkInk), behind) > contrast(luminance(lightInk), behind) ? darkInk : lightInk;
}

std::vector<std::uint32_t> premultiplied(const Image& image)
{
    std::vector<std::uint32_t> pixels;
    pixels.reserve(image.pixels.size());
    for (const std::uint32_t pixel : image.pixels) {
        const std::uint32_t alpha = pixel >> 24U;
        std::uint32_t out = alpha << 24U;
        for (const unsigned shift : shifts)
            out |= mixed(channel(pixel, shift), 0, alpha) << shift;
        pixels.push_back(out);
    }
    return pixels;
}

std::vector<std::uint32_t> painted(const Image& image, std::span<const std::uint32_t> background)
{
    std::vector<std::uint32_t> pixels(background.begin(), background.end());
    if (image.pixels.size() != pixels.size())
        return pixels;
    for (std::size_t at = 0; at < pixels.size(); ++at) {
        const std::uint32_t alpha = image.pixels[at] >> 24U;
        std::uint32_t out = 0;
        for (const unsigned shift : shifts)
            out |= mixed(channel(image.pixels[at], shift), channel(pixels[at], shift), alpha) << shift;
        pixels[at] = out;
    }
    return pixels;
}

} // namespace platform
