// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxGlobalQueue.h"

#include "support/Waiting.h"

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <future>
#include <latch>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <pthread.h>

namespace {

using namespace platform;
using enum QueuePriority;

/// Jobs that block until the test opens the gate: all, or one. What they share outlives the test.
class Blockers {
public:
    /// Starts `count` of them on the queue and waits until all of them block.
    void occupy(LinuxGlobalQueue& queue, int count, QueuePriority priority = utility)
    {
        const int target = shared_->blocked + count;
        for (int i = 0; i < count; ++i)
            queue.async(priority, [shared = shared_] {
                ++shared->blocked;
                shared->turns.wait();
                ++shared->ended;
            });
        EXPECT_TRUE(eventually([&] { return shared_->blocked == target; })) << "some wait for others";
    }
    void openOne() { shared_->turns.open(1); }
    ~Blockers()
    {
        shared_->turns.open(shared_->blocked);
        EXPECT_TRUE(eventually([&] { return shared_->ended == shared_->blocked; }));
    }

private:
    struct Turns {
        std::mutex mutex;
        std::condition_variable opened;
        int free = 0;
        void wait()
        {
            std::unique_lock lock(mutex);
            opened.wait(lock, [this] { return free > 0; });
            --free;
        }
        void open(int count)
        {
            const std::lock_guard lock(mutex);
            free += count;
            opened.notify_all();
        }
    };
    struct Shared {
        std::atomic<int> blocked = 0;
        std::atomic<int> ended = 0;
        Turns turns;
    };
    std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

TEST(LinuxGlobalQueue, BlockedJobsNeverKeepAnotherWaitingWhateverItsPriority)
{
    LinuxGlobalQueue queue;
    Blockers blockers;
    for (const QueuePriority priority : { utility, standard, userInitiated }) {
        blockers.occupy(queue, 10, userInitiated);
        std::promise<void> ran;
        queue.async(priority, [&ran] { ran.set_value(); });
        ASSERT_EQ(ran.get_future().wait_for(generousLimit), std::future_status::ready);
    }
}

TEST(LinuxGlobalQueue, BeyondTheMostThreadsTheUrgentComesFirstAndEqualsInTheirOrder)
{
    LinuxGlobalQueue queue;
    Blockers blockers;
    blockers.occupy(queue, static_cast<int>(LinuxGlobalQueue::mostThreads));
    std::string order; // touched by the one free thread only, until it is done
    std::promise<void> done;
    const auto note = [&order](char letter) { return [&order, letter] { order += letter; }; };
    queue.async(utility, note('e'));
    queue.async(standard, note('c'));
    queue.async(userInitiated, note('a'));
    queue.async(standard, note('d'));
    queue.async(userInitiated, note('b'));
    queue.async(utility, [&done] { done.set_value(); });
    EXPECT_EQ(queue.threads(), LinuxGlobalQueue::mostThreads);
    blockers.openOne();
    ASSERT_EQ(done.get_future().wait_for(generousLimit), std::future_status::ready);
    EXPECT_EQ(order, "abcde");
    EXPECT_EQ(queue.threads(), LinuxGlobalQueue::mostThreads);
}

TEST(LinuxGlobalQueue, JobsOneAfterTheOtherShareFewThreads)
{
    LinuxGlobalQueue queue;
    for (int i = 0; i < 500; ++i) {
        std::promise<void> ran;
        queue.async(standard, [&ran] { ran.set_value(); });
        ASSERT_EQ(ran.get_future().wait_for(generousLimit), std::future_status::ready);
    }
    // One that has just ended its job may not be seen as free yet.
    EXPECT_LE(queue.threads(), 8U);
}

TEST(LinuxGlobalQueue, EveryJobFromEveryThreadRunsOnceAlsoThoseThatJobsPost)
{
    constexpr int posters = 4;
    constexpr int jobs = 500;
    const auto ran = std::make_shared<std::vector<std::atomic<int>>>(2 * posters * jobs);
    std::latch done(2 * posters * jobs);
    LinuxGlobalQueue queue;
    {
        std::vector<std::jthread> threads;
        for (std::size_t poster = 0; poster < posters; ++poster)
            threads.emplace_back([&, poster] {
                for (std::size_t i = 0; i < jobs; ++i)
                    queue.async(static_cast<QueuePriority>(i % 3), [&, ran, place = 2 * (poster * jobs + i)] {
                        ++(*ran)[place];
                        queue.async(standard, [&done, ran, place] {
                            ++(*ran)[place + 1];
                            done.count_down();
                        });
                        done.count_down();
                    });
            });
    }
    done.wait();
    for (const auto& count : *ran)
        ASSERT_EQ(count, 1);
}

TEST(LinuxGlobalQueue, GoingJoinsNobodyAndDropsWhatHasNotStarted)
{
    Blockers blockers;
    auto captured = std::make_shared<int>(0);
    const std::weak_ptr<int> seen = captured;
    std::atomic<bool> ran = false;
    {
        std::optional<LinuxGlobalQueue> queue(std::in_place);
        blockers.occupy(*queue, static_cast<int>(LinuxGlobalQueue::mostThreads));
        queue->async(userInitiated, [&ran, captured = std::move(captured)] { ran = true; });
        // A queue that joined would hang here.
        queue.reset();
        EXPECT_TRUE(seen.expired());
    }
    // The blocked ones now go on without their queue.
    blockers.openOne();
    EXPECT_FALSE(ran);
}

TEST(LinuxGlobalQueue, ASignalToTheProcessIsLeftToTheMainThread)
{
    LinuxGlobalQueue queue;
    std::promise<bool> blocked;
    queue.async(standard, [&blocked] {
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        blocked.set_value(sigismember(&mask, SIGTERM) == 1 && sigismember(&mask, SIGINT) == 1);
    });
    EXPECT_TRUE(blocked.get_future().get());
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGTERM), 0) << "the posting thread keeps its own";
}

} // namespace
