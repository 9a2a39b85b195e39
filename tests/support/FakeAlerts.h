// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Alerts.h"

#include <cstddef>
#include <functional>
#include <vector>

/// Questions that a test answers.
class FakeAlerts final : public platform::Alerts {
public:
    [[nodiscard]] std::size_t runModal(const platform::Alert& alert) override
    {
        asked.push_back(alert);
        up = true;
        whileUp();
        up = false;
        return answer;
    }
    [[nodiscard]] bool isUp() const override { return up; }

    std::vector<platform::Alert> asked;
    std::size_t answer = 0;
    bool up = false;
    std::function<void()> whileUp = [] {};
};
