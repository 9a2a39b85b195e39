// SPDX-License-Identifier: Apache-2.0
#include "readings/CPUSampler.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

namespace ostrel {

namespace {

double delta(std::uint32_t now, std::uint32_t before) { return static_cast<double>(now - before); }

} // namespace

CPUSampler::CPUSampler(platform::Kernel& kernel)
    : kernel_(kernel)
{
}

double CPUSampler::sample()
{
    const auto current = kernel_.cpuTicks();
    if (!current)
        return 0;
    const platform::CpuTicks before = std::exchange(prev_, *current);
    if (!std::exchange(hasPrev_, true))
        return 0;
    const double busy = delta(current->user, before.user) + delta(current->system, before.system)
        + delta(current->nice, before.nice);
    const double total = busy + delta(current->idle, before.idle);
    return total > 0 ? std::clamp(busy / total * 100, 0.0, 100.0) : 0;
}

} // namespace ostrel
