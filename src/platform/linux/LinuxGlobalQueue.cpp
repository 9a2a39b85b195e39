// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxGlobalQueue.h"

#include <array>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <pthread.h>

namespace platform {

namespace {

constexpr std::chrono::seconds idleLife { 10 };

} // namespace

struct LinuxGlobalQueue::Pool {
    std::mutex mutex;
    std::condition_variable work;
    std::array<std::deque<Job>, 3> waiting; ///< by priority, the most urgent first
    std::size_t threads = 0;
    std::size_t idle = 0;
    bool closed = false;

    [[nodiscard]] std::size_t count() const
    {
        return waiting[0].size() + waiting[1].size() + waiting[2].size();
    }

    Job take()
    {
        for (auto& jobs : waiting) {
            if (jobs.empty())
                continue;
            Job job = std::move(jobs.front());
            jobs.pop_front();
            return job;
        }
        return {};
    }

    /// A thread's life: jobs until none has come for a while.
    static void live(const std::shared_ptr<Pool>& pool)
    {
        std::unique_lock lock(pool->mutex);
        while (true) {
            ++pool->idle;
            const bool more
                = pool->work.wait_for(lock, idleLife, [&pool] { return pool->closed || pool->count() > 0; });
            --pool->idle;
            if (!more || pool->closed)
                break;
            Job job = pool->take();
            lock.unlock();
            job();
            job = nullptr;
            lock.lock();
        }
        --pool->threads;
    }

    /// Starts a thread that keeps no signal from the main one. The lock is held.
    static void grow(const std::shared_ptr<Pool>& pool)
    {
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        ++pool->threads;
        try {
            std::thread([pool] { live(pool); }).detach();
        } catch (const std::system_error&) {
            // No thread to be had: those that exist serve the job later.
            --pool->threads;
        }
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
};

LinuxGlobalQueue::LinuxGlobalQueue()
    : pool_(std::make_shared<Pool>())
{
}

LinuxGlobalQueue::~LinuxGlobalQueue()
{
    std::array<std::deque<Job>, 3> dropped;
    {
        const std::lock_guard lock(pool_->mutex);
        pool_->closed = true;
        dropped.swap(pool_->waiting);
    }
    pool_->work.notify_all();
}

void LinuxGlobalQueue::async(QueuePriority priority, Job job)
{
    const std::lock_guard lock(pool_->mutex);
    pool_->waiting[static_cast<std::size_t>(priority)].push_back(std::move(job));
    if (pool_->count() > pool_->idle && pool_->threads < mostThreads)
        Pool::grow(pool_);
    pool_->work.notify_one();
}

std::size_t LinuxGlobalQueue::threads() const
{
    const std::lock_guard lock(pool_->mutex);
    return pool_->threads;
}

} // namespace platform
