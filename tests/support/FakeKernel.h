// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Kernel.h"

#include "support/CallLog.h"

#include <optional>

/// A kernel that says what the test set.
class FakeKernel final : public platform::Kernel, public Logged {
public:
    platform::KernelReading reading;
    std::optional<platform::CpuTicks> ticks = platform::CpuTicks {};
    int reads = 0;

    [[nodiscard]] platform::KernelReading read() override
    {
        ++reads;
        note("reads the machine");
        return reading;
    }

    [[nodiscard]] std::optional<platform::CpuTicks> cpuTicks() override
    {
        note("samples the processor");
        return ticks;
    }
};
