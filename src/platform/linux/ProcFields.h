// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Kernel.h"
#include "platform/linux/PressureLevel.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace platform {

/// The fields of /proc/meminfo that the readings need, in KiB. A field that is missing, negative, not a
/// number or beyond 2^53 is absent.
struct MemInfo {
    std::optional<std::uint64_t> memTotal;
    std::optional<std::uint64_t> memFree;
    std::optional<std::uint64_t> memAvailable;
    std::optional<std::uint64_t> buffers;
    std::optional<std::uint64_t> cached;
    std::optional<std::uint64_t> shmem;
    std::optional<std::uint64_t> sReclaimable;
    std::optional<std::uint64_t> swapTotal;
    std::optional<std::uint64_t> swapFree;

    /// Memory that can't be had back without swapping: neither free, nor file cache, nor reclaimable kernel
    /// memory. New anonymous pages start on the kernel's inactive list, so its Active counter would miss
    /// memory that was just taken. 0 when the total or the free memory is unknown.
    [[nodiscard]] std::uint64_t usedKiB() const;
    /// Swap in use; 0 when unknown.
    [[nodiscard]] std::uint64_t swapUsedKiB() const;
    /// Nothing when the total is unknown or 0. Before MemAvailable existed, free memory and caches stand for
    /// it.
    [[nodiscard]] std::optional<MemoryHeadroom> headroom() const;
};

/// Parses the text of /proc/meminfo. Any bytes; allocates nothing.
[[nodiscard]] MemInfo parseMemInfo(std::string_view text);

/// Machine-wide processor time in ticks, before the counters are cut to 32 bits.
struct CpuTimes {
    std::uint64_t user = 0;
    std::uint64_t system = 0; ///< with interrupts, and time that a hypervisor took
    std::uint64_t idle = 0; ///< with waiting for disks
    std::uint64_t nice = 0;
};

/// The first line of /proc/stat. Nothing unless it is the machine's line with at least its four classic
/// fields.
[[nodiscard]] std::optional<CpuTimes> parseCpuLine(std::string_view text);

/// A field of /proc/{pid}/stat by its number in proc(5), from 3, the state, on; nothing where the text is
/// shorter.
[[nodiscard]] std::optional<std::string_view> statField(std::string_view stat, int number);

/// /proc/pressure/memory. Nothing unless both lines carry a sound avg10.
[[nodiscard]] std::optional<MemoryStall> parseMemoryStall(std::string_view text);

/// The first number of a text such as /proc/loadavg or /proc/uptime; 0 when there is none, or it is negative
/// or not finite.
[[nodiscard]] double parseLeadingNumber(std::string_view text);

} // namespace platform
