// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Clock.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// The variables that a child starts with.
using Environment = std::map<std::string, std::string>;

/// What to start and for how long it may run.
struct ChildRequest {
    std::string executable; ///< a path; no search path is consulted
    std::vector<std::string> arguments; ///< without the program's own name
    Environment environment;
    std::optional<std::string> input; ///< for standard input; without it that is at its end at once
    Seconds timeout { 8 }; ///< after which the child is asked to end
    Seconds killDelay { 0.5 }; ///< from asking to killing
};

/// How a child ended.
struct ChildOutcome {
    std::string launchError; ///< the system's message when the child couldn't be started, else empty
    std::string output; ///< all that it wrote to standard output
    std::string errorOutput; ///< all that it wrote to standard error
    int status = -1; ///< exit status, or the number of the signal that ended it; -1 when it couldn't start
    Seconds elapsed { 0 }; ///< from the call to the outcome, on a clock that doesn't jump
};

/// The hand on one running child. Any thread.
class ChildStop {
public:
    virtual ~ChildStop() = default;

    /// Asks the child and all that it started to end, and kills what is left `killDelay` later. Returns at
    /// once. Does nothing to a child that has ended; a child that hasn't started yet ends right after its
    /// start.
    virtual void stop() = 0;
};

/// Starts children, each in a process group of its own.
class ChildProcess {
public:
    virtual ~ChildProcess() = default;

    /// A fresh hand for the next `run`.
    [[nodiscard]] virtual std::shared_ptr<ChildStop> makeStop() = 0;

    /// Runs one child to its end and gives all that it wrote. Blocks the caller, any thread but the main one.
    /// Standard input, output and error are served together, so no full pipe can hang it. It returns when the
    /// child itself has ended: a grandchild that keeps the pipes open doesn't hold it. Never throws.
    /// `stop` comes from `makeStop` and serves one run.
    [[nodiscard]] virtual ChildOutcome run(
        const ChildRequest& request, const std::shared_ptr<ChildStop>& stop)
        = 0;

    /// A copy of this process's own environment.
    [[nodiscard]] virtual Environment environment() const = 0;
};

} // namespace platform
