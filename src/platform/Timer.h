// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"

#include <memory>

namespace platform {

/// A repeating timer. Destroying it invalidates it: its job doesn't run again. It may be destroyed inside its
/// own job.
class Timer {
public:
    virtual ~Timer() = default;
};

/// Makes timers that fire on the main thread, also while a menu is open or a control is tracked.
class RunLoop {
public:
    virtual ~RunLoop() = default;

    /// A timer that runs `job` each `period`, for the first time one period from now. Main thread only.
    [[nodiscard]] virtual std::unique_ptr<Timer> scheduleRepeating(Seconds period, Job job) = 0;
};

} // namespace platform
