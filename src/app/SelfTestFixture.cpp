// SPDX-License-Identifier: Apache-2.0
#include "app/SelfTestFixture.h"

#include "platform/Timer.h"

#include <chrono>
#include <cstdint>

namespace ostrel::SelfTestFixture {

namespace {

constexpr int minutes = 120;

} // namespace

json::Value snapshot()
{
    const json::Value session { { "name", "claude" }, { "pid", 101 }, { "rss", 250 } };
    const json::Value process { { "name", "Example app" }, { "pid", "102" }, { "rss", 512 }, { "cpu", 4 },
        { "grp", "app" }, { "cmd", "example" } };
    return { { "ts", "demo" }, { "ram", { { "total", 16 }, { "used", 9.6 }, { "used_pct", 60 } } },
        { "swap", { { "used_pct", 24 }, { "used_gb", 0.96 }, { "total_gb", 4 }, { "free_gb", 3.04 } } },
        { "load", { { "l1", 2.4 }, { "ncpu", 8 }, { "pct", 30 } } }, { "fan", { { "mcp", 4 } } },
        { "sessions", { { "claude", 1 }, { "codex", 1 } } },
        { "live_sessions", json::Value::array({ session }) },
        { "verdict",
            { { "level", "ok" }, { "headline", "Memory pressure is normal" },
                { "cause", "Synthetic fixture. No action needed." } } },
        { "procs", json::Value::array({ process }) } };
}

NativeStats native()
{
    return { .swapUsedMB = 983,
        .swapTotalMB = 4096,
        .load1 = 2.4,
        .ncpu = 8,
        .pressureLevel = 1,
        .usedBytes = 9.6 * NativeStats::bytesPerGB,
        .totalBytes = 16 * NativeStats::bytesPerGB,
        .freeMB = 4096 };
}

OstrelHistory history(platform::Instant now)
{
    OstrelHistory history;
    for (int at = 0; at < minutes; ++at)
        history.record(20 + at % 11, 24, 60, 2.4, now + std::chrono::minutes(at - (minutes - 1)));
    return history;
}

} // namespace ostrel::SelfTestFixture
