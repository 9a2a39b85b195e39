// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/GlobalQueue.h"

#include <cstddef>
#include <memory>

namespace platform {

/// A pool of threads that grows while its jobs block and shrinks when it is idle. Nothing is ever joined: the
/// process may end while jobs still wait for children. Jobs that haven't started when the queue goes are
/// dropped.
class LinuxGlobalQueue final : public GlobalQueue {
public:
    /// Beyond this many threads a job waits for its turn, by priority.
    static constexpr std::size_t mostThreads = 64;

    LinuxGlobalQueue();
    LinuxGlobalQueue(const LinuxGlobalQueue&) = delete;
    LinuxGlobalQueue& operator=(const LinuxGlobalQueue&) = delete;
    ~LinuxGlobalQueue() override;

    void async(QueuePriority priority, Job job) override;

    /// Threads of the pool that exist now.
    [[nodiscard]] std::size_t threads() const;

private:
    struct Pool;
    std::shared_ptr<Pool> pool_;
};

} // namespace platform
