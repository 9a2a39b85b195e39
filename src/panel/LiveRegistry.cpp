// SPDX-License-Identifier: Apache-2.0
#include "panel/LiveRegistry.h"

#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "history/OstrelHistoryView.h"
#include "panel/GaugeView.h"

#include <QLabel>

namespace ostrel {

void LiveRegistry::add(const std::string& key, QLabel* label) { liveValueLabels_.emplace(key, label); }

void LiveRegistry::add(const std::string& key, GaugeView* gauge) { gaugeViews_.insert_or_assign(key, gauge); }

void LiveRegistry::add(const std::string& key, OstrelHistoryView* graph)
{
    historyGraphs_.insert_or_assign(key, graph);
}

void LiveRegistry::clear()
{
    liveValueLabels_.clear();
    gaugeViews_.clear();
    historyGraphs_.clear();
}

void LiveRegistry::setText(std::string_view key, std::string_view text)
{
    const auto [first, last] = liveValueLabels_.equal_range(key);
    const QString shown = utf16(text);
    for (auto label = first; label != last; ++label)
        if (label->second->text() != shown)
            label->second->setText(shown);
}

void LiveRegistry::updateGauge(
    std::string_view key, double pct, std::optional<double> from, std::string_view level)
{
    // A gauge's key is what stands in it.
    if (const auto gauge = gaugeViews_.find(key); gauge != gaugeViews_.end())
        gauge->second->update(pct, gauge->first, OstrelStyle::ink, from, level);
}

void LiveRegistry::applyGraph(std::string_view key, const std::vector<double>& values,
    const std::vector<std::int64_t>& minutes, std::optional<std::size_t> boundary)
{
    if (const auto graph = historyGraphs_.find(key); graph != historyGraphs_.end())
        graph->second->apply(values, minutes, boundary);
}

} // namespace ostrel
