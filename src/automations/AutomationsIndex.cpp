// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsIndex.h"

#include "core/Text.h"

#include <algorithm>
#include <numeric>
#include <tuple>

#include <fmt/format.h>

namespace ostrel {

AutomationsIndex indexOf(std::span<const Automation> items)
{
    AutomationsIndex index;
    index.order.resize(items.size());
    std::iota(index.order.begin(), index.order.end(), 0U);
    // Those that are equal stay in the bridge's order.
    std::stable_sort(index.order.begin(), index.order.end(), [&](std::uint32_t left, std::uint32_t right) {
        return std::tie(items[left].laneTitle, items[left].title)
            < std::tie(items[right].laneTitle, items[right].title);
    });
    index.searched.reserve(items.size());
    for (const Automation& item : items)
        index.searched.push_back(lowered(fmt::format("{} {} {}", item.title, item.id, item.host)));
    return index;
}

std::string_view rawValue(AutomationStateFilter filter)
{
    switch (filter) {
    case AutomationStateFilter::all:
        break;
    case AutomationStateFilter::enabled:
        return "enabled";
    case AutomationStateFilter::attention:
        return "attention";
    case AutomationStateFilter::unverified:
        return "unverified";
    }
    return "all";
}

bool passes(const Automation& item, AutomationStateFilter filter)
{
    switch (filter) {
    case AutomationStateFilter::all:
        break;
    case AutomationStateFilter::enabled:
        return item.active;
    case AutomationStateFilter::attention:
        return item.lastRunFailed() || item.state == "blocked" || item.state == "failed";
    case AutomationStateFilter::unverified:
        return item.unverified();
    }
    return true;
}

std::vector<std::uint32_t> matches(
    std::span<const Automation> items, const AutomationsIndex& index, const AutomationsFilter& filter)
{
    const std::string query = lowered(filter.query);
    std::vector<std::uint32_t> found;
    for (const std::uint32_t place : index.order) {
        const Automation& item = items[place];
        if ((filter.lane.empty() || item.lane == filter.lane) && passes(item, filter.state)
            && (query.empty() || index.searched[place].find(query) != std::string::npos))
            found.push_back(place);
    }
    return found;
}

AutomationsPage pageOf(std::size_t count, std::size_t page)
{
    constexpr std::size_t size = AutomationsPage::size;
    AutomationsPage shown { .pages = std::max<std::size_t>(1, (count + size - 1) / size) };
    shown.page = std::min(page, shown.pages - 1);
    shown.first = shown.page * size;
    shown.shown = std::min(size, count - shown.first);
    return shown;
}

} // namespace ostrel
