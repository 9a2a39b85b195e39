// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/GlobalQueue.h"

#include "support/CallLog.h"

#include <deque>
#include <utility>

/// A background that runs only when the test says so, on the test's own thread.
class ManualGlobalQueue final : public platform::GlobalQueue, public Logged {
public:
    void async(platform::QueuePriority priority, platform::Job job) override
    {
        note("hands work to the background");
        waiting.emplace_back(priority, std::move(job));
    }

    /// Runs all that waits, in order.
    void run()
    {
        while (!waiting.empty()) {
            const platform::Job job = std::move(waiting.front().second);
            waiting.pop_front();
            job();
        }
    }

    std::deque<std::pair<platform::QueuePriority, platform::Job>> waiting;
};
