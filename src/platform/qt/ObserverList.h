// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/Workspace.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace platform {

/// Those who want to be told of a change. Main thread. An observation may outlive the list, and may be
/// destroyed inside any job.
class ObserverList {
public:
    /// Tells `changed` from now on; `released` runs once, when the observation ends.
    [[nodiscard]] std::unique_ptr<Observation> add(Job changed, Job released = {})
    {
        std::erase_if(jobs_, [](const auto& job) { return job.expired(); });
        auto one = std::make_unique<One>(std::move(changed), std::move(released));
        jobs_.emplace_back(one->job);
        return one;
    }

    /// Queues every job of those who still listen when its turn comes.
    void tell(MainQueue& queue) const
    {
        for (const auto& job : jobs_)
            queue.post([job] {
                if (const auto held = job.lock())
                    (*held)();
            });
    }

    [[nodiscard]] bool isEmpty() const
    {
        return std::ranges::all_of(jobs_, [](const auto& job) { return job.expired(); });
    }

private:
    struct One final : Observation {
        One(Job changed, Job end)
            : job(std::make_shared<Job>(std::move(changed)))
            , released(std::move(end))
        {
        }
        One(const One&) = delete;
        One& operator=(const One&) = delete;
        ~One() override
        {
            job.reset();
            if (released)
                released();
        }

        std::shared_ptr<Job> job;
        Job released;
    };

    std::vector<std::weak_ptr<Job>> jobs_;
};

} // namespace platform
