// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/RunningInstances.h"

#include "support/CallLog.h"

#include <vector>

/// Processes that a test lists. The others are seen only once this one can be.
struct FakeRunningInstances final : platform::RunningInstances, Logged {
    [[nodiscard]] platform::RunningInstance current() override
    {
        note("lets others see it");
        registered = true;
        return me;
    }
    [[nodiscard]] std::vector<platform::RunningInstance> others() override
    {
        note("looks for others");
        return registered ? rest : std::vector<platform::RunningInstance>();
    }

    void withdraw() override
    {
        note("withdraws");
        registered = false;
    }

    platform::RunningInstance me { .pid = 100, .launch = 1000 };
    std::vector<platform::RunningInstance> rest;
    bool registered = false;
};
