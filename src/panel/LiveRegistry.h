// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/LiveViews.h"

#include <functional>
#include <map>
#include <string>

class QLabel;

namespace ostrel {

class GaugeView;
class OstrelHistoryView;

/// The live labels, gauges and graphs of the present body, by key. Emptied with each rebuild, before the
/// views go. Main thread.
class LiveRegistry final : public LiveViews {
public:
    /// The label that shows the value of `key`; several may share one key.
    void add(const std::string& key, QLabel* label);
    /// A gauge, and the graph of a key; another one of that key takes its place.
    void add(const std::string& key, GaugeView* gauge);
    void add(const std::string& key, OstrelHistoryView* graph);
    void clear();

    void setText(std::string_view key, std::string_view text) override;
    void updateGauge(
        std::string_view key, double pct, std::optional<double> from, std::string_view level) override;
    void applyGraph(std::string_view key, const std::vector<double>& values,
        const std::vector<std::int64_t>& minutes, std::optional<std::size_t> boundary) override;

private:
    std::multimap<std::string, QLabel*, std::less<>> liveValueLabels_;
    std::map<std::string, GaugeView*, std::less<>> gaugeViews_;
    std::map<std::string, OstrelHistoryView*, std::less<>> historyGraphs_;
};

} // namespace ostrel
