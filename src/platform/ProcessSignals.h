// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>

namespace platform {

/// The hand on one process that isn't ours. It goes on meaning that process, also when the process has ended
/// and its number is used again. Main thread.
class HeldProcess {
public:
    virtual ~HeldProcess() = default;

    /// Asks it to end (SIGTERM), once, and doesn't wait. 0, or the system's error number: 3 when it has
    /// ended.
    [[nodiscard]] virtual int terminate() = 0;
};

/// What taking hold of a process gave: the process, or why there is none.
struct Hold {
    std::shared_ptr<HeldProcess> process;
    /// 0 with a process, else the system's error number: 3 when it has ended or its number is another's by
    /// now; 22 when it is one that is never signalled.
    int error = 0;
};

/// Whether a number and a start can't be those of a process that may be signalled, on any machine: 0 and
/// below mean groups or everybody, 1 is the first process, and a start of 0 is none. What else is never
/// signalled the machine has to tell.
[[nodiscard]] constexpr bool neverSignalled(std::int64_t pid, std::int64_t start)
{
    return pid <= 1 || pid > INT32_MAX || start <= 0;
}

/// Signals to processes that aren't ours. Main thread.
class ProcessSignals {
public:
    virtual ~ProcessSignals() = default;

    /// Takes hold of the process of that number which started at that time, in clock ticks since the
    /// machine's own start. Never held, with error 22: what is `neverSignalled`, this process, and
    /// kernel threads.
    [[nodiscard]] virtual Hold hold(std::int64_t pid, std::int64_t start) = 0;
};

} // namespace platform
