// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/Diagnosis.h"
#include "collector/OstrelData.h"

#include <array>
#include <deque>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// What the tab says of the collector, one line each: state, commands, script, and what there is not.
[[nodiscard]] std::array<std::string, 4> collectorLines(
    std::string_view backendState, std::string_view backendLastSource, std::string_view pyPath);

/// The snapshot's own figures, shown while there is no analysis: memory, servers, the scheduler, sources.
[[nodiscard]] std::array<std::string, 4> currentFacts(const OstrelData& data);

/// A button behind which a suggestion explains itself.
struct DiagActionButton {
    std::string title;
    std::string tooltip;
    std::string accessibilityLabel; ///< empty: the title is enough
};
[[nodiscard]] DiagActionButton diagActionButton(const DiagAction& action);

/// Which of its states the analysis shows.
enum class AnalysisView { running, result, raw, idle };
[[nodiscard]] AnalysisView analysisView(bool running, const Diagnosis& diagnosis);

/// The line on memory pressure above the maintenance commands.
struct PressureRead {
    std::string text;
    bool alarming = false; ///< so much swap is used that it is told in red
};
[[nodiscard]] PressureRead pressureRead(const OstrelData& data);

/// The busiest processes by name.
[[nodiscard]] std::string hotNow(const OstrelData& data);

/// What there is to know before a maintenance command.
[[nodiscard]] std::string maintenanceOrder(const OstrelData& data, std::string_view backendLastSource);

/// One maintenance command's button.
struct MaintenanceButton {
    std::string_view key; ///< as it stands among the running ones
    std::string_view title;
    std::string_view tooltip;
    bool running = false;
};
[[nodiscard]] std::array<MaintenanceButton, 3> maintenanceButtons(
    const std::set<std::string, std::less<>>& running);

/// The report's last lines, or what stands in the place of an empty one.
[[nodiscard]] std::vector<std::string> reportLines(const std::deque<std::string>& report);

} // namespace ostrel
