// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationRecords.h"
#include "platform/Clock.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ostrel {

/// What is left of the agents' account quota, by host and window, and how the schedules divide over the
/// machines. Read from the last inventory; the age of a reading is that at the time of drawing.
struct AgentBudget {
    /// One quota window on one host.
    struct Window {
        std::string line;
        std::string toolTip;
        std::optional<double> level; ///< percent left, 0…100; nothing without a reading that counts
        std::string levelLabel; ///< for assistive technology
        std::string detail;
    };
    /// An account has a handful; what has gone astray must not fill the panel.
    static constexpr std::size_t mostWindows = 40;

    std::string title;
    std::vector<Window> windows;
    std::string notRead; ///< in the place of windows
    std::string claude;
    std::string schedules;
};

[[nodiscard]] AgentBudget agentBudget(
    std::span<const json::Value> quotas, std::span<const Automation> items, platform::Instant now);

} // namespace ostrel
