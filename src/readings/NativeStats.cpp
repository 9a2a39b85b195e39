// SPDX-License-Identifier: Apache-2.0
#include "readings/NativeStats.h"

#include "core/Text.h"

#include <algorithm>
#include <array>

namespace ostrel {

namespace {

constexpr std::uint64_t bytesPerMB = 1048576;

} // namespace

int NativeStats::memPct() const
{
    if (!(totalBytes > 0))
        return 0;
    return static_cast<int>(rounded(std::clamp(usedBytes / totalBytes * 100, 0.0, 100.0)));
}

std::int64_t NativeStats::swapPct() const
{
    if (swapTotalMB == 0)
        return 0;
    return rounded(static_cast<double>(swapUsedMB) / static_cast<double>(swapTotalMB) * 100);
}

NativeStats readNativeStats(platform::Kernel& kernel)
{
    const platform::KernelReading reading = kernel.read();
    return { .swapUsedMB = reading.swapUsedBytes / bytesPerMB,
        .swapTotalMB = reading.swapTotalBytes / bytesPerMB,
        .load1 = reading.load1,
        .ncpu = reading.activeProcessorCount,
        .pressureLevel = reading.pressureLevel,
        .usedBytes = static_cast<double>(reading.usedBytes),
        .totalBytes = static_cast<double>(reading.physicalMemoryBytes),
        .freeMB = static_cast<std::int64_t>(reading.freeBytes / bytesPerMB) };
}

std::string_view pressureName(int level)
{
    static constexpr std::array<std::string_view, 5> names { "?", "normal", "warn", "?", "critical" };
    return names[static_cast<std::size_t>(std::clamp(level, 0, 4))];
}

std::string_view pressureWord(int level)
{
    switch (level) {
    case 1:
        return "normal";
    case 2:
        return "warning";
    case 4:
        return "critical";
    default:
        return "unknown";
    }
}

} // namespace ostrel
