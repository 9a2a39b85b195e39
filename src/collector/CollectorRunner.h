// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/ChildProcess.h"

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// What a child gave.
struct CollectorResult {
    std::string data; ///< all of its standard output; empty when it couldn't start
    /// Exit status, or the number of the signal that ended it; -1 when it couldn't start.
    std::int32_t status = -1;
    std::string error; ///< empty exactly when it exited with 0 before its deadline, or failed without a word
    double elapsed = 0; ///< seconds
};

/// What to run.
struct RunRequest {
    std::string executable = "/usr/bin/python3";
    std::vector<std::string> arguments; ///< the script's path first when the executable is the interpreter
    std::optional<std::string> input; ///< standard input; without it the child reads end of file at once
    platform::Seconds timeout { 8 };
};

/// The only way to start a child: a fixed search path, both output streams drained, a deadline, and one call
/// that stops all that runs. Any thread; each run blocks its own caller only.
class CollectorRunner {
public:
    /// `children` must outlive every run.
    explicit CollectorRunner(platform::ChildProcess& children);

    /// Runs one child to its end. Never throws, never returns before the child has ended. Not for the main
    /// thread.
    [[nodiscard]] CollectorResult run(RunRequest request);

    /// Stops every child of this runner. Returns at once; the blocked runs then end in their own callers.
    void cancelAll();

    /// Waits until no child of this runner runs, at most `limit`: for the end of the process, behind
    /// `cancelAll`. True when none runs.
    bool awaitIdle(platform::Seconds limit);

private:
    platform::ChildProcess& children_;
    /// Guards the table and nothing else; never held while a child is started, served or stopped.
    std::mutex lock_;
    std::condition_variable idle_;
    std::uint64_t nextRun_ = 0;
    std::map<std::uint64_t, std::shared_ptr<platform::ChildStop>> active_;
};

} // namespace ostrel
