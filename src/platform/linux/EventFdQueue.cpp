// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/EventFdQueue.h"

#include <cstdint>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace platform {

namespace {

void signal(int fd)
{
    const std::uint64_t one = 1;
    // The counter can only be full after 2^64 posts to a queue that nobody runs.
    [[maybe_unused]] const auto written = ::write(fd, &one, sizeof one);
}

} // namespace

EventFdQueue::EventFdQueue()
    : wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

void EventFdQueue::post(Job job)
{
    const std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
    signal(wake_.get());
}

void EventFdQueue::runNext()
{
    Job job;
    {
        const std::lock_guard lock(mutex_);
        if (jobs_.empty())
            return;
        job = std::move(jobs_.front());
        jobs_.pop_front();
        // Only now: a loop that the job runs must be woken for those behind it.
        if (jobs_.empty()) {
            std::uint64_t count = 0;
            [[maybe_unused]] const auto taken = ::read(wake_.get(), &count, sizeof count);
        }
    }
    job();
}

} // namespace platform
