// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/DisplayProbe.h"
#include "platform/qt/QtRunLoop.h"

#include "support/QtEnvironment.h"

#include <QObject>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace platform;
using namespace std::chrono_literals;

TEST(QtMainQueue, JobsRunInTheirOrderWhoeverPostedThem)
{
    QtMainQueue queue;
    std::vector<int> order;
    queue.post([&] {
        order.push_back(1);
        queue.post([&] { order.push_back(4); });
    });
    std::thread([&] { queue.post([&] { order.push_back(2); }); }).join();
    queue.post([&] { order.push_back(3); });
    queue.attach();
    EXPECT_TRUE(order.empty()) << "posting or attaching runs nothing";
    EXPECT_TRUE(spinUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, (std::vector { 1, 2, 3, 4 }));
}

TEST(QtMainQueue, AJobThatWaitsInALoopOfItsOwnHoldsNoOtherJobBack)
{
    QtMainQueue queue;
    queue.attach();
    std::vector<int> order;
    queue.post([&] {
        order.push_back(1);
        spinUntil([&] { return order.size() == 3; });
        order.push_back(4);
    });
    queue.post([&] {
        order.push_back(2);
        queue.post([&] { order.push_back(3); });
    });
    EXPECT_TRUE(spinUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, (std::vector { 1, 2, 3, 4 }));
}

TEST(QtMainQueue, EachJobHasATurnOfItsOwn)
{
    QtMainQueue queue;
    queue.attach();
    auto* object = new QObject;
    bool gone = false;
    bool goneBefore = false;
    bool done = false;
    QObject::connect(object, &QObject::destroyed, [&] { gone = true; });
    queue.post([&] { object->deleteLater(); });
    queue.post([&] {
        goneBefore = gone;
        done = true;
    });
    EXPECT_TRUE(spinUntil([&] { return done; }));
    EXPECT_TRUE(goneBefore) << "what one job gave to the loop is done before the next";
}

TEST(QtMainQueue, ADetachedQueueRunsNothing)
{
    QtMainQueue queue;
    queue.attach();
    int ran = 0;
    queue.post([&] { ++ran; });
    queue.detach();
    queue.post([&] { ++ran; });
    QtMainQueue other;
    other.attach();
    bool turned = false;
    other.post([&] { turned = true; });
    EXPECT_TRUE(spinUntil([&] { return turned; }));
    EXPECT_EQ(ran, 0);
}

TEST(QtMainQueue, ADelayedJobRunsOnceAndNoEarlierThanItsDelay)
{
    QtMainQueue queue;
    queue.attach();
    const auto start = std::chrono::steady_clock::now();
    std::vector<double> elapsed;
    for (const double delay : { 0.030, 0.0101, 0.0 })
        queue.postAfter(Seconds(delay), [&elapsed, delay, start] {
            const Seconds passed = std::chrono::steady_clock::now() - start;
            EXPECT_GE(passed.count(), delay);
            elapsed.push_back(delay);
        });
    EXPECT_TRUE(spinUntil([&] { return elapsed.size() == 3; }));
    EXPECT_EQ(elapsed, (std::vector { 0.0, 0.0101, 0.030 }));
}

TEST(QtRunLoop, ATimerRepeatsUntilItIsDestroyed)
{
    QtRunLoop loop;
    int fired = 0;
    auto timer = loop.scheduleRepeating(1ms, [&] { ++fired; });
    EXPECT_EQ(fired, 0) << "for the first time one period from now";
    EXPECT_TRUE(spinUntil([&] { return fired >= 3; }));
    timer.reset();
    const int last = fired;
    int other = 0;
    const auto later = loop.scheduleRepeating(1ms, [&] { ++other; });
    EXPECT_TRUE(spinUntil([&] { return other >= 3; }));
    EXPECT_EQ(fired, last);
}

TEST(QtRunLoop, ATimerMayBeDestroyedOrReplacedInsideItsOwnJob)
{
    QtRunLoop loop;
    std::vector<int> fired;
    std::unique_ptr<Timer> timer;
    const auto captured = std::make_shared<int>(7);
    timer = loop.scheduleRepeating(1ms, [&, captured] {
        timer = loop.scheduleRepeating(1ms, [&] {
            timer.reset();
            fired.push_back(2);
        });
        fired.push_back(*captured);
    });
    EXPECT_TRUE(spinUntil([&] { return fired.size() == 2; }));
    EXPECT_TRUE(spinUntil([&] { return captured.use_count() == 1; })) << "the job has gone with its timer";
    EXPECT_EQ(fired, (std::vector { 7, 2 }));
}

TEST(DisplayProbe, ADisplayThatDoesntAnswerIsNone)
{
    ::unsetenv("WAYLAND_DISPLAY");
    for (const char* display : { "", ":4093", "nonsense" }) {
        ::setenv("DISPLAY", display, 1);
        EXPECT_EQ(chooseQtPlatform(), "offscreen") << display;
    }
    ::unsetenv("DISPLAY");
    EXPECT_EQ(chooseQtPlatform(), "offscreen");
}

} // namespace
