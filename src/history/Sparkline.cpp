// SPDX-License-Identifier: Apache-2.0
#include "history/Sparkline.h"

#include "history/Thinning.h"

#include <algorithm>

#include <fmt/format.h>

namespace ostrel::Sparkline {

namespace {

constexpr double gap = 1; ///< between two bars
constexpr double thinnest = 1; ///< a bar is no thinner and no lower
constexpr int high = 70; ///< from this percentage on a bar has a cap
constexpr double capHeight = 3;

int drawn(int sample) { return std::clamp(sample, 0, 100); }

std::string_view unit(std::size_t count) { return count == 1 ? "sample" : "samples"; }

} // namespace

std::vector<Bar> bars(std::span<const int> samples, double width, double height)
{
    if (samples.empty() || !(width > 0))
        return {};
    const std::vector<double> values(samples.begin(), samples.end());
    const double pitch = width / static_cast<double>(samples.size());
    const auto indices = worthDrawing(values, width);
    std::vector<Bar> bars;
    bars.reserve(indices.size());
    for (const std::size_t index : indices) {
        const int value = drawn(samples[index]);
        const double tall = std::max(thinnest, value / 100.0 * height);
        bars.push_back({ .x = static_cast<double>(index) * pitch,
            .width = std::max(thinnest, pitch - gap),
            .height = tall,
            .cap = value >= high ? std::min(capHeight, tall) : 0 });
    }
    return bars;
}

std::optional<std::size_t> indexAt(double x, std::size_t count, double width)
{
    if (count == 0 || !(width > 0))
        return std::nullopt;
    const double index = x / (width / static_cast<double>(count));
    const auto last = static_cast<double>(count - 1);
    return index > 0 ? static_cast<std::size_t>(std::min(index, last)) : 0;
}

std::string hoverText(std::string_view caption, std::span<const int> samples, double x, double width)
{
    const auto index = indexAt(x, samples.size(), width);
    if (!index)
        return {};
    const int value = drawn(samples[*index]);
    const std::size_t age = samples.size() - 1 - *index;
    if (age == 0)
        return fmt::format("{} · {}% · latest", caption, value);
    return fmt::format("{} · {}% · {} {} ago", caption, value, age, unit(age));
}

std::string accessibilityValue(std::span<const int> samples)
{
    if (samples.empty())
        return {};
    const auto [low, peak] = std::ranges::minmax(samples);
    return fmt::format("latest {}%, low {}%, peak {}%, {} {}", samples.back(), low, peak, samples.size(),
        unit(samples.size()));
}

} // namespace ostrel::Sparkline
