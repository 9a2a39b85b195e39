// SPDX-License-Identifier: Apache-2.0
#include "panel/LiveValues.h"

#include "core/Text.h"
#include "panel/GraphSeries.h"
#include "panel/LiveText.h"

#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

/// From which percentage on a gauge warns and is critical.
struct GaugeLimits {
    std::string_view key;
    double warn;
    double crit;
};

constexpr std::array<GaugeLimits, 3> gauges { { { "cpu", 60, 85 }, { "memory", 70, 85 },
    { "swap", 45, 70 } } };

struct GraphSource {
    std::string_view key;
    std::int64_t OstrelHistory::Point::*percentage;
};

constexpr std::array<GraphSource, 2> graphs { {
    { "cpu", &OstrelHistory::Point::cpu },
    { "swap", &OstrelHistory::Point::swap },
} };

} // namespace

LiveValues::LiveValues(
    PanelState state, LiveViews& views, const PanelBody& body, std::function<std::string()> title)
    : state_(std::move(state))
    , views_(views)
    , body_(body)
    , title_(std::move(title))
{
}

void LiveValues::refreshLiveValues()
{
    const auto& native = state_.tick.lastNative();
    if (!native)
        return;
    refreshLabels(*native);
    refreshGauges();
    if (body_.mode() == OstrelMode::overview)
        refreshGraphs();
}

void LiveValues::refreshLabels(const NativeStats& native)
{
    views_.setText("cpu", LiveText::cpu(state_.tick.lastCPU()));
    views_.setText("mem", LiveText::memory(native));
    views_.setText("mem-sub", LiveText::memoryShare(native));
    views_.setText("swap", LiveText::swap(native));
    views_.setText("swap-sub", LiveText::swapShare(native));
    views_.setText("free", LiveText::free(native));
    if (const auto age = state_.snapshots.snapshotAgeText())
        views_.setText("snapshot-age", LiveText::snapshotAge(*age));
    views_.setText("bar-preview", trimmed(title_()));
}

void LiveValues::refreshGauges()
{
    const NativeStats native = state_.tick.native();
    const std::array values { state_.tick.lastCPU(), static_cast<double>(native.memPct()),
        static_cast<double>(native.swapPct()) };
    for (std::size_t at = 0; at < gauges.size(); ++at) {
        const auto& [key, warn, crit] = gauges[at];
        const auto last = gaugeLast_.find(key);
        const auto from = last == gaugeLast_.end() ? std::nullopt : std::optional(last->second);
        views_.updateGauge(key, values[at], from, gaugeLevel(values[at] >= warn, values[at] >= crit));
        gaugeLast_.insert_or_assign(std::string(key), values[at]);
    }
}

void LiveValues::refreshGraphs()
{
    const std::string caption = historyCaption(state_.history, historyWindowMinutes);
    for (const auto& [key, percentage] : graphs) {
        const GraphSeries series = graphSeries(state_.history, percentage);
        views_.applyGraph(key, series.values, series.minutes, series.boundary);
        views_.setText(fmt::format("history-caption-{}", key), caption);
    }
}

} // namespace ostrel
