// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace ostrel {

/// The labels, gauges and graphs that the present body registered by key, written by the tick without a
/// rebuild. Every call does nothing for a key that isn't registered. Main thread only.
class LiveViews {
public:
    virtual ~LiveViews() = default;

    virtual void setText(std::string_view key, std::string_view text) = 0;
    /// Moves a gauge to `pct` from `from`, or from `pct` itself without one. `level` is "normal", "warn" or
    /// "crit".
    virtual void updateGauge(
        std::string_view key, double pct, std::optional<double> from, std::string_view level)
        = 0;
    /// Gives a graph its values and their minutes since 1970, oldest first, and the index of the first one
    /// of this run.
    virtual void applyGraph(std::string_view key, const std::vector<double>& values,
        const std::vector<std::int64_t>& minutes, std::optional<std::size_t> boundary)
        = 0;
};

} // namespace ostrel
