// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "readings/NativeStats.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ostrel {

/// MCP processes in a snapshot: its own count, or the sum of all families when it has none.
[[nodiscard]] std::int64_t mcpCount(const OstrelData& data);

/// The line over the body: what is live now, then what the collector said and how long ago.
[[nodiscard]] std::string readoutText(const OstrelData& data, const NativeStats& native, double cpu,
    const std::optional<std::string>& age, bool stale);

} // namespace ostrel
