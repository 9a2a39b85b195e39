// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/Settings.h"
#include "collector/CollectorRunner.h"
#include "collector/SnapshotCycle.h"
#include "readings/CPUSampler.h"
#include "readings/NativeTick.h"

#include "support/FakeBundle.h"
#include "support/FakeChildProcess.h"
#include "support/FakeFileManager.h"
#include "support/FakeKernel.h"
#include "support/FakeUserDefaults.h"
#include "support/ManualGlobalQueue.h"
#include "support/VirtualTime.h"

#include <cstdint>
#include <memory>
#include <string>

/// The state that the bar and the panel are drawn from, over fakes.
struct StateBench {
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
        children.outcomes.push_back({ .launchError = {},
            .output = output,
            .errorOutput = status == 0 ? "" : "the script failed",
            .status = status,
            .elapsed = platform::Seconds(0.04) });
        snapshots.fetchPythonData();
        globalQueue.run();
        time.runPosted();
    }

    FakeKernel kernel;
    ostrel::CPUSampler sampler { kernel };
    VirtualTime time;
    FakeUserDefaults defaults;
    FakeFileManager files;
    FakeChildProcess children;
    FakeBundle bundle;
    ManualGlobalQueue globalQueue;
    ostrel::NativeTick tick { kernel, sampler, time, time, defaults };
    ostrel::Settings settings { defaults };
    std::shared_ptr<ostrel::CollectorRunner> runner = std::make_shared<ostrel::CollectorRunner>(children);
    ostrel::SnapshotCycle snapshots { { time, time, globalQueue, files, bundle, time }, runner, tick };
};
