// SPDX-License-Identifier: Apache-2.0
#include "panel/ReadoutText.h"

#include "core/Text.h"

#include <fmt/format.h>

namespace ostrel {

std::int64_t mcpCount(const OstrelData& data)
{
    std::int64_t sum = 0;
    for (const auto& entry : data.fan) {
        if (entry.key == "mcp")
            return entry.count;
        // Hostile counts may not fit a sum.
        if (__builtin_add_overflow(sum, entry.count, &sum))
            return entry.count;
    }
    return sum;
}

std::string readoutText(const OstrelData& data, const NativeStats& native, double cpu,
    const std::optional<std::string>& age, bool stale)
{
    std::string text
        = fmt::format("now: cpu {}% · swap {}% · load {:.1f}   |   collector ({}): {} mcp / {} sess · {}",
            rounded(cpu), native.swapPct(), native.load1, age.value_or("no snapshot yet"), mcpCount(data),
            data.claudeSessions + data.codexSessions, data.verdict.level);
    if (stale)
        text += " · stale, refresh to update";
    return text;
}

} // namespace ostrel
