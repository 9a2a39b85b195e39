// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "history/OstrelHistory.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace ostrel {

/// What one graph of the dashboard shows of the minute history, oldest first.
struct GraphSeries {
    std::vector<double> values; ///< percent
    std::vector<std::int64_t> minutes; ///< since 1970 in UTC
    std::optional<std::size_t> boundary; ///< where this run begins, if inside
};

/// The last two hours of one percentage.
[[nodiscard]] GraphSeries graphSeries(
    const OstrelHistory& history, std::int64_t OstrelHistory::Point::*percentage);

} // namespace ostrel
