// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Kernel.h"

namespace ostrel {

/// Turns the kernel's tick counters into a busy percentage. The process has one, shared by all who ask, since
/// each sample covers the time since the one before. Main thread only.
class CPUSampler {
public:
    explicit CPUSampler(platform::Kernel& kernel);

    /// How busy the whole machine was since the previous successful sample, 0…100. 0 for the first one, when
    /// no tick has passed, and when the counters can't be read. A counter that went backwards wraps, so that
    /// one sample may be any value; the next is sound again.
    [[nodiscard]] double sample();

private:
    platform::Kernel& kernel_;
    platform::CpuTicks prev_;
    bool hasPrev_ = false;
};

} // namespace ostrel
