// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/PressureLevel.h"

#include <algorithm>
#include <array>
#include <limits>

namespace platform {

namespace {

constexpr double any = std::numeric_limits<double>::infinity();
constexpr double none = -any;

/// One way to be at a level: every condition of the row holds. Stalls in percent, headroom as shares.
struct Row {
    int level;
    double someAtLeast;
    double fullAtLeast;
    double availableBelow;
    double swapFreeBelow;

    [[nodiscard]] bool asksStall() const { return someAtLeast > none || fullAtLeast > none; }
    [[nodiscard]] bool asksSwap() const { return swapFreeBelow < any; }
};

/// 10 % of some is the 200 ms in 2 s that service managers act on; the 0.5 gate on available memory and the
/// full stall figures are those of the user-space memory monitors in common use. Kill thresholds lie far
/// above.
constexpr std::array<Row, 6> reached { {
    { 4, none, 10, 0.20, any },
    { 4, none, none, 0.04, any },
    { 4, 10, none, 0.10, 0.10 },
    { 2, 10, none, 0.50, any },
    { 2, none, 3, 0.50, any },
    { 2, none, none, 0.10, 0.25 },
} };

constexpr std::array<Row, 6> held { {
    { 4, none, 6, 0.25, any },
    { 4, none, none, 0.06, any },
    { 4, 6, none, 0.14, 0.14 },
    { 2, 6, none, 0.60, any },
    { 2, none, 2, 0.60, any },
    { 2, none, none, 0.14, 0.30 },
} };

bool holds(
    const Row& row, const std::optional<MemoryStall>& stall, const std::optional<MemoryHeadroom>& headroom)
{
    if (row.asksStall() && (!stall || stall->some10 < row.someAtLeast || stall->full10 < row.fullAtLeast))
        return false;
    if (headroom)
        return headroom->available < row.availableBelow
            && (!row.asksSwap() || headroom->swapFree < row.swapFreeBelow);
    // Without memory figures a stall stands for itself; the rows that weigh the swap can't be judged.
    return row.asksStall() && !row.asksSwap();
}

} // namespace

int pressureLevel(
    const std::optional<MemoryStall>& stall, const std::optional<MemoryHeadroom>& headroom, int previous)
{
    if (!stall && !headroom)
        return 0;
    int level = 1;
    for (const Row& row : reached)
        if (holds(row, stall, headroom))
            level = std::max(level, row.level);
    for (const Row& row : held)
        if (row.level <= previous && holds(row, stall, headroom))
            level = std::max(level, row.level);
    return level;
}

} // namespace platform
