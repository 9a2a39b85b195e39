// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace platform {

/// One running process of this program.
struct RunningInstance {
    int pid = 0;
    std::optional<std::uint64_t> launch; ///< when it was started, growing with time; absent when unknown

    bool operator==(const RunningInstance&) const = default;
};

/// The processes of this program that the same user runs. Main thread.
class RunningInstances {
public:
    virtual ~RunningInstances() = default;

    /// This process. From the first call on the others can see it.
    [[nodiscard]] virtual RunningInstance current() = 0;
    /// The living ones but this, in the order of their process ids.
    [[nodiscard]] virtual std::vector<RunningInstance> others() = 0;
    /// Takes this process off what the others see, until `current` is called again: it is about to end, and a
    /// new one needn't give way to it.
    virtual void withdraw() = 0;
};

} // namespace platform
