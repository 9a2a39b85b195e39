// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/UniqueFd.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

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

    /// Runs the jobs that wait now, on the calling thread. What they post waits for a later call. A job may
    /// call this itself, through an event loop of its own: those behind it then run there, in their order.
    void drain();

    /// Runs the job that has waited longest. The descriptor stays readable while others wait.
    void runNext();

private:
    /// The first job that waits, if it is one of the first `before` that were ever posted.
    std::optional<Job> take(std::uint64_t before);

    std::mutex mutex_;
    std::deque<Job> jobs_;
    std::uint64_t posted_ = 0; ///< jobs ever; those that wait are the last of them
    UniqueFd wake_;
};

} // namespace platform
