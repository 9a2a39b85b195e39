// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/EventFdQueue.h"

#include "platform/linux/Base64.h"
#include "support/Waiting.h"

#include <array>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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

TEST(EventFdQueue, JobsRunInOrderAndWhatTheyPostWaitsForALaterCall)
{
    EventFdQueue queue;
    std::string ran;
    EXPECT_FALSE(readable(queue));
    queue.post([&] {
        ran += 'a';
        queue.post([&ran] { ran += 'c'; });
    });
    queue.post([&ran] { ran += 'b'; });
    EXPECT_TRUE(readable(queue));
    queue.drain();
    EXPECT_EQ(ran, "ab");
    EXPECT_TRUE(readable(queue)) << "the posted one waits";
    queue.drain();
    EXPECT_EQ(ran, "abc");
    EXPECT_FALSE(readable(queue)) << "a loop would turn for nothing";
    queue.drain();
    EXPECT_EQ(ran, "abc");
}

TEST(EventFdQueue, AJobThatRunsALoopOfItsOwnHoldsBackNoneAndTheOrderStays)
{
    // An alert stands on the stack of the job that shows it, and turns the same queue meanwhile.
    EventFdQueue queue;
    std::string ran;
    queue.post([&] {
        ran += 'a';
        queue.post([&ran] { ran += 'd'; });
        EXPECT_TRUE(readable(queue)) << "the loop inside isn't woken";
        queue.drain();
        ran += '|';
        queue.post([&ran] { ran += 'e'; });
    });
    queue.post([&ran] { ran += 'b'; });
    queue.post([&ran] { ran += 'c'; });
    queue.drain();
    EXPECT_EQ(ran, "abcd|");
    queue.drain();
    EXPECT_EQ(ran, "abcd|e");
    EXPECT_FALSE(readable(queue));
}

TEST(EventFdQueue, EachJobIsReleasedAsSoonAsItHasRun)
{
    EventFdQueue queue;
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> seen = held;
    queue.post([held = std::exchange(held, nullptr)] { ++*held; });
    queue.post([&seen] { EXPECT_TRUE(seen.expired()); });
    queue.drain();
}

TEST(EventFdQueue, WhatManyThreadsPostArrivesWholeAndInEachThreadsOrder)
{
    constexpr int posters = 4;
    constexpr int jobs = 2000;
    EventFdQueue queue;
    std::array<int, posters> next {};
    bool ordered = true;
    std::vector<std::jthread> threads;
    for (std::size_t poster = 0; poster < posters; ++poster)
        threads.emplace_back([&, poster] {
            for (int i = 0; i < jobs; ++i)
                queue.post([&, poster, i] { ordered &= next[poster]++ == i; });
        });
    EXPECT_TRUE(eventually([&] {
        if (readable(queue))
            queue.drain();
        return next == std::array { jobs, jobs, jobs, jobs };
    }));
    EXPECT_TRUE(ordered);
    EXPECT_FALSE(readable(queue));
}

TEST(Base64, TurnsBytesToTextAndBack)
{
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte += static_cast<char>(byte);
    for (const auto& [bytes, text] : { std::pair { ""s, "" }, { "f"s, "Zg==" }, { "fo"s, "Zm8=" },
             { "foo"s, "Zm9v" }, { "foob"s, "Zm9vYg==" }, { "\0\xff\xfe"s, "AP/+" }, { "\0"s, "AA==" } }) {
        EXPECT_EQ(toBase64(bytes), text);
        EXPECT_EQ(fromBase64(text), bytes) << text;
    }
    EXPECT_EQ(fromBase64(toBase64(everyByte)), everyByte);
    for (const std::string& text : { "Z"s, "Zg="s, "Zg"s, "===="s, "Z==="s, "Zg==Zg=="s, "Z=g="s, "Zm9 "s,
             "Zm9v\n"s, "Zm9-"s, "Zm\0v"s, "\xc3\xa9g="s })
        EXPECT_EQ(fromBase64(text), std::nullopt) << text;
}

} // namespace
