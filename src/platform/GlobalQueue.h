// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"

namespace platform {

/// Which of two waiting jobs starts first when no thread is free. Work that a person waits for comes before
/// work that nobody watches.
enum class QueuePriority { userInitiated, standard, utility };

/// Runs jobs off the main thread. Jobs may block for minutes: a blocked job never keeps another one waiting.
class GlobalQueue {
public:
    virtual ~GlobalQueue() = default;

    /// Hands a job over. Any thread; returns at once. The job touches only what it captured by value.
    virtual void async(QueuePriority priority, Job job) = 0;
};

} // namespace platform
