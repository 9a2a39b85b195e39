// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "platform/Alerts.h"
#include "sessions/SessionText.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// The agents' processes that a snapshot saw, a page of them.
struct LiveProcesses {
    static constexpr std::size_t pageSize = 12;

    /// One process and its line.
    struct Row {
        std::string text;
        OstrelData::Proc proc;
    };

    std::string title;
    std::string note;
    std::string nothing; ///< what stands in the place of the rows; empty when there are some
    std::vector<Row> rows; ///< of the page, the largest first
    std::optional<Pager> pager;

    /// At least one.
    [[nodiscard]] static std::size_t pages(std::size_t processes);
};
/// `page` is one that there is.
[[nodiscard]] LiveProcesses liveProcesses(const OstrelData& data, std::size_t page);

/// What a snapshot counted.
struct ProcessCounters {
    /// One family of processes.
    struct Row {
        std::string key;
        std::string count;
        std::string toolTip; ///< how it was counted
    };

    std::string title;
    std::vector<Row> rows;
    std::string bundles; ///< empty without any
    std::string perSession;
};
/// Nothing where nothing was counted; `age` as in "12s ago".
[[nodiscard]] std::optional<ProcessCounters> processCounters(
    const OstrelData& data, const std::optional<std::string>& age);

/// What is scheduled in the background.
struct LaunchdBox {
    std::string counts;
    bool alarming = false; ///< told in red
    std::string labels;
};
[[nodiscard]] LaunchdBox launchdBox(const OstrelData::LaunchdAudit& audit);

/// All that is known of one process; the second button copies it.
[[nodiscard]] platform::Alert detailsAlert(const OstrelData::Proc& proc);

} // namespace ostrel
