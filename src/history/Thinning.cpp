// SPDX-License-Identifier: Apache-2.0
#include "history/Thinning.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace ostrel {

namespace {

/// A pixel of a dense screen.
constexpr double columnsPerPoint = 2;
/// Values in a column up to which each is drawn.
constexpr double crowded = 4;

} // namespace

std::vector<std::size_t> worthDrawing(std::span<const double> values, double width)
{
    const double wanted = std::max(1.0, std::ceil(width * columnsPerPoint));
    const std::size_t count = values.size();
    std::vector<std::size_t> drawn;
    if (!(static_cast<double>(count) > crowded * wanted)) {
        drawn.resize(count);
        std::iota(drawn.begin(), drawn.end(), std::size_t { 0 });
        return drawn;
    }
    const auto columns = static_cast<std::size_t>(wanted);
    const auto add = [&drawn](std::size_t index) {
        if (drawn.empty() || drawn.back() < index)
            drawn.push_back(index);
    };
    drawn.reserve(2 * columns + 2);
    add(0);
    for (std::size_t column = 0; column < columns; ++column) {
        const std::size_t begin = count / columns * column + std::min(column, count % columns);
        const std::size_t length = count / columns + (column < count % columns ? 1 : 0);
        const auto [low, high] = std::ranges::minmax_element(values.subspan(begin, length));
        const auto [earlier, later] = std::minmax({ low - values.begin(), high - values.begin() });
        add(static_cast<std::size_t>(earlier));
        add(static_cast<std::size_t>(later));
    }
    add(count - 1);
    return drawn;
}

} // namespace ostrel
