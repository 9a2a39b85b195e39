// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/ProcessSignals.h"

#include <cerrno>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

/// Processes that the test makes, each with its start; what goes to them is written down and ends nothing.
class FakeProcessSignals final : public platform::ProcessSignals {
public:
    [[nodiscard]] platform::Hold hold(std::int64_t pid, std::int64_t start) override
    {
        held.push_back(pid);
        if (platform::neverSignalled(pid, start))
            return { nullptr, EINVAL };
        const auto found = running.find(pid);
        if (found == running.end() || found->second != start)
            return { nullptr, ESRCH };
        auto process = std::make_shared<Process>();
        process->owner = this;
        process->pid = pid;
        process->start = start;
        return { process, 0 };
    }

    std::map<std::int64_t, std::int64_t> running; ///< start by pid
    std::map<std::int64_t, int> errors; ///< what a signal to a pid gives instead of going out
    std::vector<std::int64_t> held; ///< each pid that was to be held, in order
    std::vector<std::int64_t> terminated; ///< each signal that went out, in order

private:
    struct Process final : platform::HeldProcess {
        [[nodiscard]] int terminate() override
        {
            const auto found = owner->running.find(pid);
            if (found == owner->running.end() || found->second != start)
                return ESRCH;
            if (const auto refused = owner->errors.find(pid); refused != owner->errors.end())
                return refused->second;
            owner->terminated.push_back(pid);
            return 0;
        }

        FakeProcessSignals* owner = nullptr;
        std::int64_t pid = 0;
        std::int64_t start = 0;
    };
};
