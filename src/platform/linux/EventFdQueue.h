// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/UniqueFd.h"

#include <deque>
#include <mutex>

namespace platform {

/// The heart of a main queue: jobs in order, and a descriptor that becomes readable while some are waiting,
/// for whatever event loop the thread runs.
class EventFdQueue {
public:
    EventFdQueue();

    /// Any thread.
    void post(Job job);

    /// Readable while jobs wait.
    [[nodiscard]] int fd() const { return wake_.get(); }

    /// Runs the job that has waited longest, on the calling thread. The descriptor stays readable while
    /// others wait. A job may call this itself, through an event loop of its own: those behind it then run
    /// there.
    void runNext();

private:
    std::mutex mutex_;
    std::deque<Job> jobs_;
    UniqueFd wake_;
};

} // namespace platform
