// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/RunningInstances.h"

#include <vector>

/// Processes that a test lists. The others are seen only once this one can be.
struct FakeRunningInstances final : platform::RunningInstances {
    [[nodiscard]] platform::RunningInstance current() override
    {
        registered = true;
        return me;
    }
    [[nodiscard]] std::vector<platform::RunningInstance> others() override
    {
        return registered ? rest : std::vector<platform::RunningInstance>();
    }

    platform::RunningInstance me { .pid = 100, .launch = 1000 };
    std::vector<platform::RunningInstance> rest;
    bool registered = false;
};
