// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/EventFdQueue.h"

#include "platform/linux/Base64.h"
#include "support/Waiting.h"

#include <array>
#include <numeric>
#include <thread>

#include <gtest/gtest.h>
#include <poll.h>

namespace {

using namespace platform;
using namespace std::string_literals;

bool readable(const EventFdQueue& queue)
{
    pollfd watched { queue.fd(), POLLIN, 0 };
    return ::poll(&watched, 1, 0) == 1;
}

/// As an event loop turns while there is something to do.
void runAll(EventFdQueue& queue)
{
    while (readable(queue))
        queue.runNext();
}

TEST(EventFdQueue, JobsRunInOrderAlsoInALoopInsideAJob)
{
    // An alert stands on the stack of the job that shows it, and turns the same queue meanwhile.
    EventFdQueue queue;
    std::string ran;
    const auto note = [&ran](char letter) { return [&ran, letter] { ran += letter; }; };
    EXPECT_FALSE(readable(queue));
    queue.post([&] {
        ran += 'a';
        EXPECT_TRUE(readable(queue)) << "the loop inside isn't woken for those behind";
        queue.post(note('d'));
        runAll(queue);
        ran += '|';
        queue.post(note('e'));
    });
    queue.post(note('b'));
    queue.post(note('c'));
    EXPECT_TRUE(readable(queue));
    queue.runNext();
    EXPECT_EQ(ran, "abcd|");
    EXPECT_TRUE(readable(queue));
    queue.runNext();
    EXPECT_EQ(ran, "abcd|e");
    EXPECT_FALSE(readable(queue)) << "a loop would turn for nothing";
    queue.runNext();
}

TEST(EventFdQueue, EachJobIsReleasedAsSoonAsItHasRun)
{
    EventFdQueue queue;
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> seen = held;
    queue.post([held = std::exchange(held, nullptr)] { ++*held; });
    queue.post([&seen] { EXPECT_TRUE(seen.expired()); });
    runAll(queue);
}

TEST(EventFdQueue, WhatManyThreadsPostArrivesWholeAndInEachThreadsOrder)
{
    constexpr int jobs = 2000;
    EventFdQueue queue;
    std::array<int, 4> next {};
    bool ordered = true;
    std::vector<std::jthread> threads;
    for (int& mine : next)
        threads.emplace_back([&] {
            for (int i = 0; i < jobs; ++i)
                queue.post([&, i] { ordered &= mine++ == i; });
        });
    EXPECT_TRUE(eventually([&] {
        runAll(queue);
        return next == std::array { jobs, jobs, jobs, jobs };
    }));
    EXPECT_TRUE(ordered);
    EXPECT_FALSE(readable(queue));
}

TEST(Base64, TurnsBytesToTextAndBack)
{
    for (const auto& [bytes, text] : { std::pair { ""s, "" }, { "f"s, "Zg==" }, { "fo"s, "Zm8=" },
             { "foo"s, "Zm9v" }, { "foob"s, "Zm9vYg==" }, { "\0\xff\xfe"s, "AP/+" }, { "\0"s, "AA==" } }) {
        EXPECT_EQ(toBase64(bytes), text);
        EXPECT_EQ(fromBase64(text), bytes) << text;
    }
    std::string everyByte(256, '\0');
    std::iota(everyByte.begin(), everyByte.end(), '\0');
    EXPECT_EQ(fromBase64(toBase64(everyByte)), everyByte);
    for (const std::string& text : { "Z"s, "Zg="s, "Zg"s, "===="s, "Z==="s, "Zg==Zg=="s, "Z=g="s, "Zm9 "s,
             "Zm9v\n"s, "Zm9-"s, "Zm\0v"s, "\xc3\xa9g="s })
        EXPECT_EQ(fromBase64(text), std::nullopt) << text;
}

} // namespace
