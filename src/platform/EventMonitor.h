// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Workspace.h"

#include <memory>

namespace platform {

/// What the user does outside the program's own windows. Main thread.
class EventMonitor {
public:
    virtual ~EventMonitor() = default;

    /// Runs `pressed` each time the left or the right mouse button goes down on another program. Null where
    /// the desktop doesn't tell of that.
    [[nodiscard]] virtual std::unique_ptr<Observation> monitorMouseDown(Job pressed) = 0;
};

} // namespace platform
