// SPDX-License-Identifier: Apache-2.0
#include "history/OstrelHistory.h"

#include "platform/linux/LinuxFileManager.h"
#include "support/ForkedProcess.h"
#include "support/TemporaryHome.h"
#include "support/Waiting.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

using namespace ostrel;

/// A full day, unlike another one in every line and in length.
OstrelHistory day(std::int64_t first, std::int64_t percent)
{
    OstrelHistory history;
    for (std::int64_t i = 0; i < 1440 - percent; ++i)
        history.points.push_back(
            { .minute = first + i, .cpu = percent, .swap = percent, .ram = percent, .load = 1.5 });
    return history;
}

/// Lets the kernel kill this process, as hard as it can, that long from now.
void killMyselfIn(std::chrono::nanoseconds delay)
{
    sigevent event {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer {};
    itimerspec when {};
    when.it_value.tv_sec = delay / std::chrono::seconds(1);
    when.it_value.tv_nsec = (delay % std::chrono::seconds(1)).count();
    ASSERT_EQ(::timer_create(CLOCK_MONOTONIC, &event, &timer), 0);
    ASSERT_EQ(::timer_settime(timer, 0, &when, nullptr), 0);
}

TEST(HistoryFile, AKillAtAnyMomentOfASaveLeavesTheOldFileOrTheNew)
{
    constexpr int kills = 300;
    const TemporaryHome home;
    const std::string path = OstrelHistory::defaultPath(home.path());
    const std::string folder = platform::parentDirectory(path);
    const OstrelHistory one = day(28'000'000, 3);
    const OstrelHistory other = day(29'000'000, 70);
    const std::string texts[] { one.serialized(), other.serialized() };
    platform::LinuxFileManager files;
    const auto savePair = [&] {
        other.save(files, path);
        one.save(files, path);
    };
    // The moments are spread evenly over the time of a few saves, however fast the disk and the build are.
    savePair();
    const auto begin = std::chrono::steady_clock::now();
    savePair();
    const std::chrono::nanoseconds span = 2 * (std::chrono::steady_clock::now() - begin);

    int withLeftover = 0;
    int seen[2] {};
    for (int kill = 1; kill <= kills; ++kill) {
        ForkedProcess saver([&] {
            killMyselfIn(span * kill / kills);
            while (true)
                savePair();
        });
        ASSERT_EQ(saver.wait(), -SIGKILL);
        const auto text = files.read(path, 1'000'000);
        ASSERT_TRUE(text && (*text == texts[0] || *text == texts[1]))
            << "after kill " << kill << " the file holds " << (text ? text->size() : 0) << " bytes";
        ++seen[*text == texts[0] ? 0 : 1];
        // What one killed process left, the next one's first save has removed.
        const auto entries = entriesIn(folder);
        ASSERT_LE(entries, 2) << "after kill " << kill;
        withLeftover += entries == 2;
    }
    // The kills did fall into the midst of saves, on either side of the replacement.
    EXPECT_GT(withLeftover, 10);
    EXPECT_GT(seen[0], 10);
    EXPECT_GT(seen[1], 10);
    one.save(files, path);
    EXPECT_EQ(entriesIn(folder), 1);
    EXPECT_EQ(OstrelHistory::parse(files.read(path, 1'000'000).value_or("")), one.points);
}

TEST(HistoryFile, SavesOnAFullDiskLoseNothingAndTheNextOneThatFitsHoldsAll)
{
    const TemporaryHome home;
    const std::string path = OstrelHistory::defaultPath(home.path());
    ForkedProcess process([&path] {
        platform::LinuxFileManager files;
        const OstrelHistory small = day(28'000'000, 100);
        const OstrelHistory large = day(28'000'000, 1);
        small.save(files, path);
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit full { 10'000, RLIM_INFINITY };
        ::setrlimit(RLIMIT_FSIZE, &full);
        large.save(files, path);
        EXPECT_EQ(files.read(path, 1'000'000), small.serialized());
        const rlimit room { 1'000'000, RLIM_INFINITY };
        ::setrlimit(RLIMIT_FSIZE, &room);
        large.save(files, path);
        EXPECT_EQ(files.read(path, 1'000'000), large.serialized());
    });
    EXPECT_EQ(process.wait(), 0);
}

} // namespace
