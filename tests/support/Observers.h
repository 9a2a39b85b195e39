// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Workspace.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

/// Those who want to be told, for the fakes.
class Observers {
public:
    [[nodiscard]] std::unique_ptr<platform::Observation> add(platform::Job changed)
    {
        auto one = std::make_unique<One>();
        one->job = std::make_shared<platform::Job>(std::move(changed));
        std::erase_if(jobs_, [](const auto& gone) { return gone.expired(); });
        jobs_.emplace_back(one->job);
        return one;
    }

    void tell()
    {
        for (const auto& job : std::vector(jobs_))
            if (const auto held = job.lock())
                (*held)();
    }

    /// How many are listening.
    [[nodiscard]] std::ptrdiff_t count() const
    {
        return std::ranges::count_if(jobs_, [](const auto& job) { return !job.expired(); });
    }

private:
    struct One final : platform::Observation {
        std::shared_ptr<platform::Job> job;
    };

    std::vector<std::weak_ptr<platform::Job>> jobs_;
};
