// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/ProcessSignals.h"

#include <string>

namespace platform {

/// The machine's processes, held by pidfd. A kernel without those (before 5.3) gives error 38 and no signal:
/// a number alone may be another process's by the time of the signal.
class LinuxProcessSignals final : public ProcessSignals {
public:
    /// `procRoot` is where start times and kinds are read.
    explicit LinuxProcessSignals(std::string procRoot = "/proc");

    [[nodiscard]] Hold hold(std::int64_t pid, std::int64_t start) override;

private:
    std::string procRoot_;
};

} // namespace platform
