// SPDX-License-Identifier: Apache-2.0
#include "panel/ReadoutText.h"

#include "core/Text.h"

#include <fmt/format.h>

namespace ostrel {

namespace {

/// a + b, held at the ends of the range: a snapshot's counts may lie anywhere in 64 bits.
std::int64_t plus(std::int64_t a, std::int64_t b)
{
    std::int64_t sum = 0;
    if (!__builtin_add_overflow(a, b, &sum))
        return sum;
    return a > 0 ? INT64_MAX : INT64_MIN;
}

} // namespace

std::optional<std::int64_t> fanCount(const OstrelData& data, std::string_view key)
{
    for (const auto& entry : data.fan)
        if (entry.key == key)
            return entry.count;
    return std::nullopt;
}

std::int64_t mcpCount(const OstrelData& data)
{
    if (const auto told = fanCount(data, "mcp"))
        return *told;
    std::int64_t sum = 0;
    for (const auto& entry : data.fan)
        sum = plus(sum, entry.count);
    return sum;
}

std::int64_t sessionCount(const OstrelData& data) { return plus(data.claudeSessions, data.codexSessions); }

std::string readoutText(const OstrelData& data, const NativeStats& native, double cpu,
    const std::optional<std::string>& age, bool stale)
{
    std::string text
        = fmt::format("now: cpu {}% · swap {}% · load {:.1f}   |   collector ({}): {} mcp / {} sess · {}",
            rounded(cpu), native.swapPct(), native.load1, age.value_or("no snapshot yet"), mcpCount(data),
            sessionCount(data), data.verdict.level);
    if (stale)
        text += " · stale, refresh to update";
    return text;
}

} // namespace ostrel
