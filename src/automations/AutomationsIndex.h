// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationRecords.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// What each drawing asks of an inventory, worked out once: ten thousand rows aren't sorted for every page.
struct AutomationsIndex {
    std::vector<std::uint32_t> order; ///< places of the items, by lane title and then by title
    std::vector<std::string> searched; ///< by place: the text that a query is looked for in, in lower case
};

/// Of these items. Any thread.
[[nodiscard]] AutomationsIndex indexOf(std::span<const Automation> items);

/// Which jobs the state filter lets through.
enum class AutomationStateFilter { all, enabled, attention, unverified };

/// The word on the filter's button.
[[nodiscard]] std::string_view rawValue(AutomationStateFilter filter);

/// Whether the job passes.
[[nodiscard]] bool passes(const Automation& item, AutomationStateFilter filter);

/// What the user wants to see.
struct AutomationsFilter {
    std::string lane; ///< a lane's key; empty: all
    AutomationStateFilter state = AutomationStateFilter::all;
    std::string query; ///< to be found in title, id and host; empty: all
};

/// The places of the items that pass, in the order in which they are shown. `index` is of these items.
[[nodiscard]] std::vector<std::uint32_t> matches(
    std::span<const Automation> items, const AutomationsIndex& index, const AutomationsFilter& filter);

/// A page of a list.
struct AutomationsPage {
    static constexpr std::size_t size = 12;

    std::size_t page = 0; ///< from 0, the last one at most
    std::size_t pages = 1; ///< at least one
    std::size_t first = 0; ///< place of the first shown
    std::size_t shown = 0;

    [[nodiscard]] bool hasNext() const { return page + 1 < pages; }
    bool operator==(const AutomationsPage&) const = default;
};

/// The page of that number, or the last one, of `count` rows.
[[nodiscard]] AutomationsPage pageOf(std::size_t count, std::size_t page);

} // namespace ostrel
