// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/ActiveProcessors.h"

#include <algorithm>

#include <sched.h>
#include <unistd.h>

namespace platform {

int activeProcessors()
{
    cpu_set_t mask;
    CPU_ZERO(&mask);
    // Fails on machines with more processors than the mask has bits.
    if (::sched_getaffinity(0, sizeof mask, &mask) == 0)
        return std::max(1, CPU_COUNT(&mask));
    return static_cast<int>(std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN)));
}

} // namespace platform
