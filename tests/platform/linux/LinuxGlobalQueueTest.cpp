// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxGlobalQueue.h"

#include "support/Waiting.h"

#include <atomic>
#include <csignal>
#include <future>
#include <semaphore>
#include <thread>

#include <gtest/gtest.h>
#include <pthread.h>

namespace {

using namespace platform;
using enum QueuePriority;

/// Jobs that block until the test opens the gate: all, or one. What they share outlives the test.
class Blockers {
public:
    /// Starts `count` of them on the queue and waits until all of them block.
    void occupy(LinuxGlobalQueue& queue, int count)
    {
        const int target = shared_->blocked + count;
        for (int i = 0; i < count; ++i)
            queue.async(userInitiated, [shared = shared_] {
                ++shared->blocked;
                shared->gate.acquire();
                ++shared->ended;
            });
        EXPECT_TRUE(eventually([&] { return shared_->blocked == target; })) << "some wait for others";
    }
    void openOne() { shared_->gate.release(); }
    ~Blockers()
    {
        shared_->gate.release(shared_->blocked);
        EXPECT_TRUE(eventually([&] { return shared_->ended == shared_->blocked; }));
    }

private:
    struct Shared {
        std::atomic<int> blocked = 0;
        std::atomic<int> ended = 0;
        std::counting_semaphore<> gate { 0 };
    };
    std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

/// Waits until a job of that priority has run.
bool runsOne(LinuxGlobalQueue& queue, QueuePriority priority)
{
    std::promise<void> ran;
    queue.async(priority, [&ran] { ran.set_value(); });
    return ran.get_future().wait_for(generousLimit) == std::future_status::ready;
}

TEST(LinuxGlobalQueue, BlockedJobsNeverKeepAnotherWaitingWhateverItsPriority)
{
    LinuxGlobalQueue queue;
    Blockers blockers;
    for (const QueuePriority priority : { utility, standard, userInitiated }) {
        blockers.occupy(queue, 10);
        ASSERT_TRUE(runsOne(queue, priority));
    }
}

TEST(LinuxGlobalQueue, BeyondTheMostThreadsTheUrgentComesFirstAndEqualsInTheirOrder)
{
    LinuxGlobalQueue queue;
    Blockers blockers;
    blockers.occupy(queue, static_cast<int>(LinuxGlobalQueue::mostThreads));
    std::string order; // touched by the one free thread only, until it is done
    for (const auto& [priority, letter] : { std::pair { utility, 'e' }, { standard, 'c' },
             { userInitiated, 'a' }, { standard, 'd' }, { userInitiated, 'b' } })
        queue.async(priority, [&order, letter = letter] { order += letter; });
    blockers.openOne();
    ASSERT_TRUE(runsOne(queue, utility));
    EXPECT_EQ(order, "abcde");
    EXPECT_EQ(queue.threads(), LinuxGlobalQueue::mostThreads);
}

TEST(LinuxGlobalQueue, JobsOneAfterTheOtherShareFewThreads)
{
    LinuxGlobalQueue queue;
    for (int i = 0; i < 500; ++i)
        ASSERT_TRUE(runsOne(queue, standard));
    // One that has just ended its job may not be seen as free yet.
    EXPECT_LE(queue.threads(), 8U);
}

TEST(LinuxGlobalQueue, EveryJobFromEveryThreadRunsOnceAlsoThoseThatJobsPost)
{
    constexpr int posters = 4;
    constexpr int jobs = 500;
    std::atomic<int> ran = 0;
    LinuxGlobalQueue queue;
    {
        std::vector<std::jthread> threads;
        for (int poster = 0; poster < posters; ++poster)
            threads.emplace_back([&] {
                for (int i = 0; i < jobs; ++i)
                    queue.async(static_cast<QueuePriority>(i % 3), [&] {
                        queue.async(standard, [&ran] { ++ran; });
                        ++ran;
                    });
            });
    }
    EXPECT_TRUE(eventually([&] { return ran == 2 * posters * jobs; }));
    ASSERT_TRUE(runsOne(queue, utility));
    EXPECT_EQ(ran, 2 * posters * jobs) << "none twice";
}

TEST(LinuxGlobalQueue, GoingJoinsNobodyAndDropsWhatHasNotStarted)
{
    Blockers blockers;
    auto captured = std::make_shared<int>(0);
    const std::weak_ptr<int> seen = captured;
    std::atomic<bool> ran = false;
    std::optional<LinuxGlobalQueue> queue(std::in_place);
    blockers.occupy(*queue, static_cast<int>(LinuxGlobalQueue::mostThreads));
    queue->async(userInitiated, [&ran, captured = std::move(captured)] { ran = true; });
    // A queue that joined would hang here. The blocked ones then go on without their queue.
    queue.reset();
    EXPECT_TRUE(seen.expired());
    EXPECT_FALSE(ran);
}

TEST(LinuxGlobalQueue, ASignalToTheProcessIsLeftToTheMainThread)
{
    const auto blocks = [](int signal) {
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        return sigismember(&mask, signal) == 1;
    };
    LinuxGlobalQueue queue;
    std::promise<bool> blocked;
    queue.async(standard, [&] { blocked.set_value(blocks(SIGTERM) && blocks(SIGINT)); });
    EXPECT_TRUE(blocked.get_future().get());
    EXPECT_FALSE(blocks(SIGTERM)) << "the posting thread keeps its own";
}

} // namespace
