// SPDX-License-Identifier: Apache-2.0
#include "panel/LiveRegistry.h"

#include "design/Utf8.h"

#include <QLabel>

namespace ostrel {

void LiveRegistry::add(const std::string& key, QLabel* label) { labels_.emplace(key, label); }

void LiveRegistry::clear() { labels_.clear(); }

void LiveRegistry::setText(std::string_view key, std::string_view text)
{
    const auto [first, last] = labels_.equal_range(key);
    const QString shown = utf16(text);
    for (auto label = first; label != last; ++label)
        if (label->second->text() != shown)
            label->second->setText(shown);
}

void LiveRegistry::updateGauge(std::string_view, double, std::optional<double>, std::string_view)
{
    // No tab registers a gauge.
}

void LiveRegistry::applyGraph(std::string_view, const std::vector<double>&, std::optional<std::size_t>)
{
    // No tab registers a graph.
}

} // namespace ostrel
