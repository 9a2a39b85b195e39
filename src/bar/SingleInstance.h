// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/RunningInstances.h"
#include "platform/UrlEvents.h"

#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// The first of the others that was started before `me`; nothing when this one stays. At equal times the
/// smaller process id is the elder, and an unknown time lies in the distant past: a strict order, so that of
/// any two exactly one stays.
[[nodiscard]] std::optional<int> elderPid(
    const platform::RunningInstance& me, const std::vector<platform::RunningInstance>& others);

/// What this process was started for, beside running.
struct LaunchWish {
    std::vector<std::string> urls; ///< addresses to open, in order
    bool background = false; ///< it needn't be seen
};

/// Leaves the place to an elder instance. When one runs it is handed the addresses, or else, unless this was
/// a start in the background, is asked to come forward; the result is then the line to print before this
/// process exits with 0. Nothing when this process stays. May take the second that a hand-over waits.
[[nodiscard]] std::optional<std::string> enforceSingleInstance(
    platform::RunningInstances& instances, platform::UrlEvents& urlEvents, const LaunchWish& wish);

} // namespace ostrel
