// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "janitor/ProtectionList.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// One way to look at the processes.
struct ProcessFilter {
    std::string_view key;
    std::string_view title;
};
/// In the order of their buttons. The first is the one at the start, and stands in for an unknown key.
inline constexpr std::array<ProcessFilter, 5> processFilters { {
    { "memory", "by memory" },
    { "cpu", "by cpu" },
    { "agents", "agent procs" },
    { "mcp", "mcp procs" },
    { "stoppable", "can stop" },
} };

/// Which processes a filter shows, as places in `procs`, in the order to show them; those that are alike stay
/// in the collector's order.
[[nodiscard]] std::vector<std::size_t> filteredProcesses(
    const std::vector<OstrelData::Proc>& procs, std::string_view filter, const ProtectionRules& rules);

/// How a figure is coloured: the names of the panel's style.
enum class CpuColor { muted, amber, redBright };

/// What one row says.
struct ProcessRow {
    std::string pid;
    std::string name;
    std::string tip; ///< tooltip of the row and the name
    std::string nameLabel; ///< the name for assistive technology; empty: the name itself
    std::string tag;
    std::string tagTip;
    std::string cpu;
    CpuColor cpuColor = CpuColor::muted;
    std::string memory;
    std::string button;
    std::string buttonTip;
    bool isProtected = false; ///< the button is disabled
};
[[nodiscard]] ProcessRow processRow(const OstrelData::Proc& proc, bool isProtected);

/// One line of a row's menu.
struct ProcessMenuLine {
    std::string_view title; ///< in plain words; nothing shows it
    std::string shown; ///< empty: a separator
    double size = 12; ///< points
    bool strong = false; ///< semibold
    bool quiet = false; ///< muted, else ink
    bool enabled = false; ///< asks for the stop of the row's process; the others do nothing
};
[[nodiscard]] std::array<ProcessMenuLine, 4> processMenu(const OstrelData::Proc& proc, bool isProtected);

} // namespace ostrel
