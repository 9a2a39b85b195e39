// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Workspace.h"

#include "support/CallLog.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Those who want to be told, for the fakes.
class Observers : public Logged {
public:
    [[nodiscard]] std::unique_ptr<platform::Observation> add(platform::Job changed)
    {
        note("watches " + what);
        auto one = std::make_unique<One>(log(), "watches no " + what);
        one->job = std::make_shared<platform::Job>(std::move(changed));
        std::erase_if(jobs_, [](const auto& job) { return job.expired(); });
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

    std::string what; ///< as the log calls it

private:
    struct One final : platform::Observation {
        One(CallLog* log, std::string call)
            : end(log, std::move(call))
        {
        }

        NotesEnd end;
        std::shared_ptr<platform::Job> job;
    };

    std::vector<std::weak_ptr<platform::Job>> jobs_;
};
