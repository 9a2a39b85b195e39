// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/ChildProcess.h"

#include <cstddef>

namespace platform {

/// Children through posix_spawn, each served by one poll loop on its caller's thread.
///
/// A child starts in a process group of its own, with default signals, and with no descriptor but its three
/// streams. What is stopped is stopped with its whole group: the request to end goes to the group, the kill
/// too, and what is left of the group when the child itself has ended is killed as well.
class LinuxChildProcess final : public ChildProcess {
public:
    /// Of each stream at most this much is kept; what comes behind it is read and dropped, so the child
    /// doesn't block.
    static constexpr std::size_t longestOutput = std::size_t { 64 } * 1024 * 1024;

    [[nodiscard]] std::shared_ptr<ChildStop> makeStop() override;
    [[nodiscard]] ChildOutcome run(
        const ChildRequest& request, const std::shared_ptr<ChildStop>& stop) override;
    [[nodiscard]] Environment environment() const override;
};

} // namespace platform
