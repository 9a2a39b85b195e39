// SPDX-License-Identifier: Apache-2.0
#include "hints/HintText.h"

#include "hints/CompanionPolicy.h"

#include <fmt/format.h>

namespace ostrel {

namespace {

std::string title(bool preview, int level)
{
    return preview ? "Companion preview" : fmt::format("OS pressure · {}", CompanionPolicy::pressure(level));
}

} // namespace

HintText legacyHintText(bool preview, int level)
{
    const HintButton inspect { "inspect", "open the workloads behind this hint and acknowledge it", 82 };
    return { title(preview, level),
        preview ? "This is a preview. Inspect opens your workload view."
                : "Pressure has stayed elevated. Inspect workloads before choosing an action.",
        { inspect,
            preview ? HintButton { "close", "close the sample card", 68 }
                    : HintButton { "30m", "snooze this hint for 30 minutes", 68 } },
        {} };
}

HintText sharedHintText(bool preview, int level)
{
    return { title(preview, level),
        preview ? "This is a preview. Inspect opens workloads."
                : "Pressure stayed elevated. Inspect workloads.",
        { HintButton { "inspect", {}, 0 }, HintButton { preview ? "close" : "30m", {}, 0 } },
        fmt::format("OSTREL · pressure {}", CompanionPolicy::pressure(level)) };
}

} // namespace ostrel
