// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Kernel.h"

#include <cstdint>
#include <string_view>

namespace ostrel {

/// One reading of the machine. Every field is 0 where the kernel gave none.
struct NativeStats {
    std::uint64_t swapUsedMB = 0; ///< MiB, rounded down
    std::uint64_t swapTotalMB = 0; ///< MiB, rounded down
    double load1 = 0; ///< one-minute load average
    std::int64_t ncpu = 0; ///< active processors
    int pressureLevel = 0; ///< 1 normal, 2 warning, 4 critical; 0 unknown
    double usedBytes = 0; ///< memory that can't be had back without swapping
    double totalBytes = 0; ///< physical memory
    std::int64_t freeMB = 0; ///< MiB, cut toward zero

    [[nodiscard]] double usedGB() const { return usedBytes / bytesPerGB; }
    [[nodiscard]] double totalGB() const { return totalBytes / bytesPerGB; }
    /// Used memory as a whole percentage, 0…100; 0 when the total is unknown.
    [[nodiscard]] int memPct() const;
    /// Used swap as a whole percentage; 0 without swap, above 100 when more is used than allocated.
    [[nodiscard]] std::int64_t swapPct() const;

    static constexpr double bytesPerGB = 1073741824;
};

/// Reads memory, swap, load and pressure in one pass. Never blocks, never fails.
[[nodiscard]] NativeStats readNativeStats(platform::Kernel& kernel);

/// The word for a pressure level: "normal", "warn", "critical", "?" for any other; beyond 0…4 the nearest
/// end.
[[nodiscard]] std::string_view pressureName(int level);

/// The level in full: "normal", "warning", "critical", "unknown" for any other.
[[nodiscard]] std::string_view pressureWord(int level);

/// Where the values come from, as the panel states it beside them.
inline constexpr std::string_view memorySource
    = "vm_stat + hw.memsize; native, used = active + wired + compressor";
inline constexpr std::string_view swapSource = "sysctl vm.swapusage; native";
inline constexpr std::string_view loadSource = "getloadavg + hw.ncpu; native";

} // namespace ostrel
