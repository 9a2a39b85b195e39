// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

namespace ostrel {

/// Consecutive slices of `size` items, the last one shorter if need be; none for a size of 0. They look into
/// the items, which outlive them.
template <typename Item>
[[nodiscard]] std::vector<std::span<const Item>> chunked(std::span<const Item> items, std::size_t size)
{
    std::vector<std::span<const Item>> slices;
    while (size > 0 && !items.empty()) {
        const std::size_t taken = std::min(size, items.size());
        slices.push_back(items.first(taken));
        items = items.subspan(taken);
    }
    return slices;
}

template <typename Item>
[[nodiscard]] std::vector<std::span<const Item>> chunked(const std::vector<Item>& items, std::size_t size)
{
    return chunked(std::span<const Item>(items), size);
}

template <typename Item>
void chunked(const std::vector<Item>&& items, std::size_t size) = delete;

} // namespace ostrel
