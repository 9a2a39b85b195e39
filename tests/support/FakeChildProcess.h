// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/ChildProcess.h"
#include "platform/MainQueue.h"

#include "support/CallLog.h"

#include <deque>
#include <memory>
#include <utility>
#include <vector>

/// Children that never start: each run is recorded and answered with the next prepared outcome, or with a
/// silent success when none is left.
class FakeChildProcess final : public platform::ChildProcess, public Logged {
public:
    struct Stop final : platform::ChildStop {
        void stop() override
        {
            ++*stops;
            if (noted)
                noted();
        }
        std::shared_ptr<int> stops;
        platform::Job noted;
    };

    [[nodiscard]] std::shared_ptr<platform::ChildStop> makeStop() override
    {
        auto stop = std::make_shared<Stop>();
        stop->stops = stops;
        stop->noted = [this] { note("stops a child"); };
        return stop;
    }

    [[nodiscard]] platform::ChildOutcome run(
        const platform::ChildRequest& request, const std::shared_ptr<platform::ChildStop>&) override
    {
        requests.push_back(request);
        if (whileRunning)
            whileRunning();
        platform::ChildOutcome outcome;
        outcome.status = 0;
        if (outcomes.empty())
            return outcome;
        outcome = std::move(outcomes.front());
        outcomes.pop_front();
        return outcome;
    }

    [[nodiscard]] platform::Environment environment() const override { return surroundings; }

    std::vector<platform::ChildRequest> requests;
    std::deque<platform::ChildOutcome> outcomes;
    platform::Environment surroundings;
    platform::Job whileRunning; ///< called inside each run
    std::shared_ptr<int> stops = std::make_shared<int>(0); ///< how often a run was asked to stop
};
