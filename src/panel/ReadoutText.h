// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "readings/NativeStats.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// Processes of one family in a snapshot; nothing when it doesn't count them.
[[nodiscard]] std::optional<std::int64_t> fanCount(const OstrelData& data, std::string_view key);

/// MCP processes in a snapshot: its own count, or the sum of all families when it has none.
[[nodiscard]] std::int64_t mcpCount(const OstrelData& data);

/// Agent sessions in a snapshot.
[[nodiscard]] std::int64_t sessionCount(const OstrelData& data);

/// The line over the body: what is live now, then what the collector said and how long ago.
[[nodiscard]] std::string readoutText(const OstrelData& data, const NativeStats& native, double cpu,
    const std::optional<std::string>& age, bool stale);

} // namespace ostrel
