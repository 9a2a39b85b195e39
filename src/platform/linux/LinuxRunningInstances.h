// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/RunningInstances.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class UniqueFd;

/// One file per process in a folder of the user's: its name is the process id, its text the process's start
/// in ticks since the machine was booted. A file counts only while the kernel lists a living process of that
/// id with that start, so what a killed one leaves behind, or a process id used once more, deceives nobody;
/// others remove it. A folder that isn't this user's alone isn't used: each process then knows itself only.
class LinuxRunningInstances final : public RunningInstances {
public:
    /// Touches nothing yet.
    explicit LinuxRunningInstances(std::string folder = defaultFolder());
    LinuxRunningInstances(const LinuxRunningInstances&) = delete;
    LinuxRunningInstances& operator=(const LinuxRunningInstances&) = delete;
    /// Takes this process's file away.
    ~LinuxRunningInstances() override;

    /// "ostrel" in the user's runtime folder, or where there is none one of the user's own in /tmp.
    [[nodiscard]] static std::string defaultFolder();

    /// Puts this process's file back where it is missing.
    [[nodiscard]] RunningInstance current() override;
    [[nodiscard]] std::vector<RunningInstance> others() override;
    /// Takes this process's file away. A copy that was forked off leaves it alone.
    void withdraw() override;

private:
    [[nodiscard]] UniqueFd openFolder() const;

    std::string folder_;
    int registeredPid_ = 0; ///< 0 while no file was written
};

/// The start, in ticks since the machine was booted, that a /proc/{pid}/stat tells. Nothing for a process
/// that has ended but is still listed, and for anything else.
[[nodiscard]] std::optional<std::uint64_t> parseStartTicks(std::string_view stat);

} // namespace platform
