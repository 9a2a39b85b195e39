// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "platform/Clock.h"
#include "readings/NativeStats.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// What the dashboard is drawn from.
struct DashboardFacts {
    NativeStats native;
    double cpu = 0; ///< percent
    platform::Seconds nativeInterval { 0 };
    std::optional<std::string> snapshotAge; ///< as in "12s ago"
    bool serverChecked = false; ///< a check of the server has succeeded
};

/// One reading of the dashboard. `valueKey` and `detailKey` name what the tick keeps up to date; empty where
/// it doesn't.
struct MetricText {
    std::string title;
    std::string value;
    std::string detail;
    std::string toolTip;
    std::string_view valueKey;
    std::string_view detailKey;

    bool operator==(const MetricText&) const = default;
};

/// All that the dashboard says, but for the captions of its buttons and graphs.
struct DashboardText {
    static constexpr std::size_t metricCount = 4;

    std::string pressure;
    bool alarming = false; ///< the pressure is
    std::string pressureToolTip;
    std::array<MetricText, metricCount> metrics;
    std::string snapshot; ///< how old the collector's part is
    std::string server;
};

[[nodiscard]] DashboardText dashboardText(const DashboardFacts& facts, const OstrelData& data);

} // namespace ostrel
