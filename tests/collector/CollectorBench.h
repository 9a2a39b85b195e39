// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/SnapshotCycle.h"

#include "support/FakeMachine.h"
#include "support/FakePanel.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A cycle with an open panel, whose children answer what the test prepared.
struct CollectorBench : FakeMachine {
    CollectorBench() { cycle->connect(panel, panel); }

    void fetch(
        const std::string& output, int status = 0, const std::string& errorOutput = {}, double elapsed = 0.1)
    {
        answer(output, status, errorOutput, elapsed);
        cycle->fetchPythonData();
        deliver();
    }
    std::vector<std::string> calls() { return std::exchange(panel.calls, {}); }
    [[nodiscard]] std::size_t waiting() const { return globalQueue.waiting.size(); }

    ostrel::CPUSampler sampler { kernel };
    FakePanel panel;
    ostrel::NativeTick tick { kernel, sampler, time, time, defaults };
    std::shared_ptr<ostrel::CollectorRunner> runner = std::make_shared<ostrel::CollectorRunner>(children);
    std::optional<ostrel::SnapshotCycle> cycle { std::in_place,
        ostrel::SnapshotCycle::Platform { time, time, globalQueue, files, bundle, time }, runner, tick };
};
