// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Kernel.h"

#include <optional>

/// A kernel that says what the test set.
class FakeKernel final : public platform::Kernel {
public:
    platform::KernelReading reading;
    std::optional<platform::CpuTicks> ticks = platform::CpuTicks {};
    int reads = 0;

    [[nodiscard]] platform::KernelReading read() override
    {
        ++reads;
        return reading;
    }

    [[nodiscard]] std::optional<platform::CpuTicks> cpuTicks() override { return ticks; }
};
