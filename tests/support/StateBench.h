// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/Settings.h"
#include "collector/CollectorRunner.h"
#include "collector/SnapshotCycle.h"
#include "readings/CPUSampler.h"
#include "readings/NativeTick.h"

#include "support/FakeMachine.h"

#include <cstdint>
#include <memory>
#include <string>

/// The state that the bar and the panel are drawn from, over fakes.
struct StateBench : FakeMachine {
    static constexpr std::uint64_t mb = 1048576;

    /// Makes the next sample read this percentage.
    void setCpu(std::uint32_t percent)
    {
        kernel.ticks->user += percent;
        kernel.ticks->idle += 100 - percent;
    }

    /// Fetches a snapshot, which the script answers with this text and status.
    void fetch(const std::string& output, int status = 0)
    {
        answer(output, status, status == 0 ? "" : "the script failed", 0.04);
        snapshots.fetchPythonData();
        deliver();
    }

    ostrel::CPUSampler sampler { kernel };
    ostrel::NativeTick tick { kernel, sampler, time, time, defaults };
    ostrel::Settings settings { defaults };
    std::shared_ptr<ostrel::CollectorRunner> runner = std::make_shared<ostrel::CollectorRunner>(children);
    ostrel::SnapshotCycle snapshots { { time, time, globalQueue, files, bundle, time }, runner, tick };
};
