// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/CollectorRunner.h"
#include "core/Json.h"
#include "platform/ChildProcess.h"
#include "platform/Clock.h"

#include <atomic>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// The one way to the script that speaks with the schedulers. Any thread.
class AutomationsBridge {
public:
    /// Both must outlive every call.
    AutomationsBridge(platform::ChildProcess& children, const platform::Clock& clock);

    /// This process is a self-test: where OSTREL_PUBLIC_FIXTURE is "1" as well, a made-up inventory answers
    /// instead of the script, and every other command is refused.
    void setSelfTest(bool selfTest) { selfTest_ = selfTest; }

    /// Runs the script at `path`, and gives the object that it printed. Nothing when it couldn't start, took
    /// longer than `timeout`, ended with another status than 0, or printed anything else. Blocks its caller;
    /// not for the main thread.
    [[nodiscard]] std::optional<json::Value> call(
        const std::string& path, std::vector<std::string> arguments, platform::Seconds timeout);

private:
    [[nodiscard]] bool answersWithFixture() const;

    platform::ChildProcess& children_;
    const platform::Clock& clock_;
    CollectorRunner runner_;
    std::atomic<bool> selfTest_ = false;
};

/// The made-up inventory; `now` in seconds since 1970.
[[nodiscard]] json::Value syntheticInventory(double now);

} // namespace ostrel
