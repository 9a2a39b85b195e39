// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Clock.h"

#include <functional>

namespace platform {

/// A piece of work that runs once.
using Job = std::function<void()>;

/// The queue of the thread that owns all state and all views. Jobs run there one at a time, in the order in
/// which they were posted, each in a turn of its own of the loop.
class MainQueue {
public:
    virtual ~MainQueue() = default;

    /// Queues a job. Any thread; returns at once.
    virtual void post(Job job) = 0;

    /// Queues a job that runs no earlier than `delay` from now. Main thread only.
    virtual void postAfter(Seconds delay, Job job) = 0;
};

} // namespace platform
