// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/DisplayProbe.h"
#include "platform/qt/QtRunLoop.h"

#include "support/QtEnvironment.h"

#include <QObject>

#include <chrono>
#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>

namespace {

using namespace platform;
using namespace std::chrono_literals;
using Order = std::vector<int>;

TEST(QtMainQueue, JobsRunInTheirOrderWhoeverPostsThemAndALoopInsideOneHoldsNoneBack)
{
    QtMainQueue queue;
    Order order;
    const auto note = [&order](int number) { return [&order, number] { order.push_back(number); }; };
    queue.post([&] {
        queue.post(note(3));
        spinUntil([&] { return order.size() == 3; });
        order.push_back(4);
    });
    std::thread([&] { queue.post(note(1)); }).join();
    queue.post(note(2));
    queue.attach();
    EXPECT_TRUE(order.empty()) << "posting or attaching runs nothing";
    EXPECT_TRUE(spinUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, (Order { 1, 2, 3, 4 }));
}

TEST(QtMainQueue, EachJobHasATurnOfItsOwnUntilTheQueueIsDetached)
{
    QtMainQueue queue;
    QtMainQueue other;
    queue.attach();
    auto* object = new QObject;
    bool gone = false;
    bool done = false;
    int ran = 0;
    QObject::connect(object, &QObject::destroyed, [&] { gone = true; });
    queue.post([&] { object->deleteLater(); });
    queue.post([&] {
        EXPECT_TRUE(gone) << "what one job gave to the loop is done before the next";
        queue.detach();
        queue.post([&] { ++ran; });
        other.attach();
        other.post([&] { done = true; });
    });
    queue.post([&] { ++ran; });
    EXPECT_TRUE(spinUntil([&] { return done; }));
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
            EXPECT_GE(Seconds(std::chrono::steady_clock::now() - start).count(), delay);
            elapsed.push_back(delay);
        });
    EXPECT_TRUE(spinUntil([&] { return elapsed.size() == 3; }));
    EXPECT_EQ(elapsed, (std::vector { 0.0, 0.0101, 0.030 }));
}

TEST(QtRunLoop, ATimerRepeatsUntilItIsDestroyedOrReplacedAlsoInsideItsOwnJob)
{
    QtRunLoop loop;
    int fired = 0;
    std::unique_ptr<Timer> timer;
    const auto captured = std::make_shared<int>(0);
    timer = loop.scheduleRepeating(1ms, [&, captured] {
        if (++*captured < 3)
            return;
        timer = loop.scheduleRepeating(1ms, [&] {
            timer.reset();
            ++fired;
        });
        EXPECT_EQ(*captured, 3);
    });
    EXPECT_EQ(*captured, 0) << "for the first time one period from now";
    EXPECT_TRUE(spinUntil([&] { return fired > 0 && captured.use_count() == 1; })) << "the job goes with it";
    int other = 0;
    const auto later = loop.scheduleRepeating(1ms, [&] { ++other; });
    EXPECT_TRUE(spinUntil([&] { return other >= 3; }));
    EXPECT_EQ(fired, 1);
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
