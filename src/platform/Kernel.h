// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

namespace platform {

/// What the kernel says about memory, swap, load and pressure in one pass. A figure that it doesn't give is
/// 0.
struct KernelReading {
    std::uint64_t swapTotalBytes = 0;
    std::uint64_t swapUsedBytes = 0;
    double load1 = 0; ///< one-minute load average
    int activeProcessorCount = 0; ///< processors that this process may run on
    int pressureLevel = 0; ///< 1 normal, 2 warning, 4 critical; 0 unknown
    std::uint64_t physicalMemoryBytes = 0;
    std::uint64_t usedBytes = 0; ///< memory that can't be had back without swapping
    std::uint64_t freeBytes = 0; ///< memory that nothing uses at all, not even as cache
};

/// Processor time since the machine started, in ticks. The counters wrap.
struct CpuTicks {
    std::uint32_t user = 0;
    std::uint32_t system = 0;
    std::uint32_t idle = 0;
    std::uint32_t nice = 0;

    bool operator==(const CpuTicks&) const = default;
};

/// Direct kernel queries: cheap, never blocking, never starting a process. Main thread only.
class Kernel {
public:
    virtual ~Kernel() = default;

    /// One reading. The pressure level is the operating system's and may depend on earlier readings.
    [[nodiscard]] virtual KernelReading read() = 0;

    /// The machine-wide tick counters; nothing when they can't be read.
    [[nodiscard]] virtual std::optional<CpuTicks> cpuTicks() = 0;
};

} // namespace platform
