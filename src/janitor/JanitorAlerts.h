// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "janitor/JanitorRecords.h"
#include "platform/Alerts.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ostrel {

/// The button of a janitor's question that acts; the other one cancels, and so does closing.
inline constexpr std::size_t actButton = 0;

/// The second press of each flow: what exactly would happen.
[[nodiscard]] platform::Alert cleanAlert(std::string_view group, const JanitorPreview& preview);
[[nodiscard]] platform::Alert stopMCPAlert(std::string_view depth, const JanitorKillPreview& preview);
[[nodiscard]] platform::Alert stopFindingAlert(std::string_view title, const JanitorKillPreview& preview);
[[nodiscard]] platform::Alert stopOneAlert(std::string_view name, const JanitorProcess& process);
[[nodiscard]] platform::Alert unprotectAlert(std::string_view name);

} // namespace ostrel
