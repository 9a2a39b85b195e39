// SPDX-License-Identifier: Apache-2.0
/// Stored hint policies: what is taken can be kept again as the same, and answers readings.
#include "hints/CompanionPolicy.h"

#include "fuzz/FuzzTarget.h"

using ostrel::CompanionPolicy;

void runOn(std::string_view text)
{
    auto policy = CompanionPolicy::decoded(text);
    if (!policy)
        return;
    check(CompanionPolicy::decoded(policy->encoded()) == policy);
    CompanionPolicy::Date now {};
    for (int at = 0; at < 30; ++at, now += platform::Seconds(3))
        if (policy->observe(at % 4, now, platform::Seconds(10), true, false))
            policy->record("presented", now);
}
