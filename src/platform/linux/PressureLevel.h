// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

namespace platform {

/// The kernel's pressure-stall averages for memory: percent of the last ten seconds in which some, or all,
/// runnable tasks waited for memory.
struct MemoryStall {
    double some10 = 0;
    double full10 = 0;
};

/// How much memory and swap could still be handed out, as shares 0…1. A machine without swap has 0 of it.
struct MemoryHeadroom {
    double available = 0;
    double swapFree = 0;
};

/// The memory-pressure level: 1 normal, 2 warning, 4 critical, 0 when neither source can be read.
///
/// Neither source is trusted alone: stalls also come from reclaim after a big copy on a machine with plenty
/// of room, and a machine can run full and healthy for days. A level once reached is held, through
/// `previous`, until its own lower release thresholds are passed, so that it doesn't flicker.
[[nodiscard]] int pressureLevel(
    const std::optional<MemoryStall>& stall, const std::optional<MemoryHeadroom>& headroom, int previous);

} // namespace platform
