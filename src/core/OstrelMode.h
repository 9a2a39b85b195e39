// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace ostrel {

/// The panel's tabs, in the order of their keys.
enum class OstrelMode {
    overview,
    system,
    processes,
    sessions,
    diagnosis,
    cleanup,
    automations,
    server,
    settings
};

/// What a tab is called.
struct OstrelModeWords {
    OstrelMode mode;
    std::string_view title; ///< in the tab strip and the help overlay
    std::string_view hint; ///< tooltip
};

inline constexpr std::size_t ostrelModeCount = 9;

/// All modes with their words, in order: the key of a tab is its index plus 1.
[[nodiscard]] const std::array<OstrelModeWords, ostrelModeCount>& ostrelModes();

/// The place of a mode in that table.
[[nodiscard]] constexpr std::size_t index(OstrelMode mode) { return static_cast<std::size_t>(mode); }

/// The words of one mode.
[[nodiscard]] inline const OstrelModeWords& words(OstrelMode mode) { return ostrelModes()[index(mode)]; }

} // namespace ostrel
