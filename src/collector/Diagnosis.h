// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// One thing that the analyst suggests to look at.
struct DiagAction {
    std::string id; ///< fresh at each making; only tells rows apart
    std::string label;
    std::string kind;
    std::string target;
    std::int64_t estMB = 0; ///< observed footprint in MiB
    std::string reason;
    std::string risk;
};

/// What the analyst's run came to, as the insights tab shows it.
struct Diagnosis {
    std::string text; ///< the findings, or what was printed, or why there is nothing
    std::vector<DiagAction> actions; ///< in the analyst's order
    std::string summary; ///< one line; empty where the answer had no known form

    [[nodiscard]] bool empty() const { return text.empty() && actions.empty(); }
};

/// Reads what the analyst printed: an object with findings and actions, the older array of actions, or else
/// the text as it is. `source` names the analyst where the answer doesn't. Never fails: entries that lack
/// what they need are dropped.
[[nodiscard]] Diagnosis readDiagnosis(std::string_view output, std::int32_t status, std::string_view source);

} // namespace ostrel
