// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Alerts.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <vector>

/// Questions that are answered at once, with what the test put in the queue, else with the one that cancels.
struct FakeAlerts final : platform::Alerts {
    [[nodiscard]] std::size_t runModal(const platform::Alert& alert) override
    {
        asked.push_back(alert);
        ++up;
        if (meanwhile)
            meanwhile();
        --up;
        if (answers.empty())
            return platform::cancelButton(alert);
        const std::size_t answer = answers.front();
        answers.pop_front();
        return answer;
    }
    [[nodiscard]] bool isUp() const override { return up > 0; }

    std::vector<platform::Alert> asked;
    std::deque<std::size_t> answers;
    std::function<void()> meanwhile; ///< what the loop does while a question waits
    int up = 0;
};
