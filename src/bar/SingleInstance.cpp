// SPDX-License-Identifier: Apache-2.0
#include "bar/SingleInstance.h"

#include <algorithm>
#include <tuple>

#include <fmt/format.h>

namespace ostrel {

std::optional<int> elderPid(
    const platform::RunningInstance& me, const std::vector<platform::RunningInstance>& others)
{
    // An absent time compares as smaller than any.
    const auto age = [](const platform::RunningInstance& one) { return std::tie(one.launch, one.pid); };
    const auto elder = std::ranges::find_if(others, [&](const auto& other) { return age(other) < age(me); });
    return elder == others.end() ? std::nullopt : std::optional(elder->pid);
}

std::optional<std::string> enforceSingleInstance(
    platform::RunningInstances& instances, platform::UrlEvents& urlEvents, const LaunchWish& wish)
{
    // In this order: of two that start together, the later to look sees the other.
    const platform::RunningInstance me = instances.current();
    const auto elder = elderPid(me, instances.others());
    if (!elder)
        return std::nullopt;
    if (!wish.urls.empty() || !wish.background)
        urlEvents.handOver(wish.urls);
    return fmt::format("ostrel: pid {} is older – exiting duplicate pid {}\n", *elder, me.pid);
}

} // namespace ostrel
