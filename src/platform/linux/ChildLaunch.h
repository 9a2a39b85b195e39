// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/ChildProcess.h"
#include "platform/linux/UniqueFd.h"

#include <optional>
#include <string>

#include <sys/types.h>

namespace platform {

/// A child that has just started, with our ends of its streams. They don't block.
struct LaunchedChild {
    pid_t pid = -1;
    UniqueFd input; ///< none when the child has no input
    UniqueFd output;
    UniqueFd errorOutput;
};

/// Starts the child; nothing when it can't be started, with the system's message in `error`, always in
/// English.
[[nodiscard]] std::optional<LaunchedChild> launchChild(const ChildRequest& request, std::string& error);

} // namespace platform
