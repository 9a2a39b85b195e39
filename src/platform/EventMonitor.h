// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/KeyEvents.h"
#include "platform/Workspace.h"

#include <functional>
#include <memory>

namespace platform {

/// What the user does, also outside the program's own windows. Main thread.
class EventMonitor {
public:
    virtual ~EventMonitor() = default;

    /// Runs `pressed` each time the left or the right mouse button goes down on another program. Null where
    /// the desktop doesn't tell of that.
    [[nodiscard]] virtual std::unique_ptr<Observation> monitorMouseDown(Job pressed) = 0;

    /// Shows each key that goes down in a window of the program to `take`, before any view gets it. A key
    /// that `take` answers true for goes no further. What it observes may end inside of `take`.
    [[nodiscard]] virtual std::unique_ptr<Observation> monitorKeyDown(
        std::function<bool(const KeyDown&)> take)
        = 0;
};

} // namespace platform
