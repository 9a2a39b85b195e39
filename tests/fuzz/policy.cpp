// SPDX-License-Identifier: Apache-2.0
/// Stored hint policies: what is taken can be kept again as the same, and answers readings.
#include "hints/CompanionPolicy.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using ostrel::CompanionPolicy;
    auto policy = CompanionPolicy::decoded({ reinterpret_cast<const char*>(data), size });
    if (!policy)
        return 0;
    if (CompanionPolicy::decoded(policy->encoded()) != policy)
        std::abort();
    CompanionPolicy::Date now {};
    for (int at = 0; at < 30; ++at, now += platform::Seconds(3))
        if (policy->observe(at % 4, now, platform::Seconds(10), true, false))
            policy->record("presented", now);
    return 0;
}
