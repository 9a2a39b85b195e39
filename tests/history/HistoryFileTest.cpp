// SPDX-License-Identifier: Apache-2.0
#include "history/OstrelHistory.h"

#include "platform/linux/LinuxFileManager.h"
#include "support/ForkedProcess.h"
#include "support/TemporaryHome.h"
#include "support/Waiting.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

/// A full day, unlike another one in every line and in length.
OstrelHistory day(std::int64_t first, std::int64_t percent)
{
    OstrelHistory history;
    for (std::int64_t i = 0; i < 1440 - percent; ++i)
        history.points.push_back({ first + i, percent, percent, percent, 1.5 });
    return history;
}

/// Lets the kernel kill this process, as hard as it can, that long from now.
void killMyselfIn(std::chrono::nanoseconds delay)
{
    sigevent event {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer {};
    const itimerspec when { {},
        { delay / std::chrono::seconds(1), (delay % std::chrono::seconds(1)).count() } };
    ASSERT_EQ(::timer_create(CLOCK_MONOTONIC, &event, &timer), 0);
    ASSERT_EQ(::timer_settime(timer, 0, &when, nullptr), 0);
}

TEST(HistoryFile, AKillAtAnyMomentOfASaveLeavesTheOldFileOrTheNew)
{
    constexpr int round = 300;
    const TemporaryHome home;
    const std::string path = OstrelHistory::defaultPath(home.path());
    const std::string folder = platform::parentDirectory(path);
    const OstrelHistory days[] { day(28'000'000, 3), day(29'000'000, 70) };
    const std::string texts[] { days[0].serialized(), days[1].serialized() };
    platform::LinuxFileManager files;
    days[0].save(files, path);
    const auto begin = std::chrono::steady_clock::now();
    days[0].save(files, path);
    // The moments of a round are spread evenly over the time of a few saves. On a busy machine that time says
    // little about the next save's, so further rounds follow, over longer times, until each kind of moment
    // has been met: inside a save, and on either side of a replacement.
    std::chrono::nanoseconds span = 2 * (std::chrono::steady_clock::now() - begin);
    int withLeftover = 0;
    int seen[2] {};
    std::size_t now = 0;
    for (int kills = 1; kills <= round || std::min({ withLeftover, seen[0], seen[1] }) <= 10; ++kills) {
        ASSERT_LT(kills, 10 * round) << withLeftover << ' ' << seen[0] << ' ' << seen[1];
        ForkedProcess saver([&] {
            killMyselfIn(span * (kills % round + 1) / round);
            // The first save is never of what the file holds already.
            for (std::size_t next = 1 - now;; next = 1 - next)
                days[next].save(files, path);
        });
        ASSERT_EQ(saver.wait(), -SIGKILL);
        const auto text = files.read(path, 1'000'000);
        ASSERT_TRUE(text && (*text == texts[0] || *text == texts[1]))
            << "after kill " << kills << " the file holds " << (text ? text->size() : 0) << " bytes";
        now = *text == texts[0] ? 0 : 1;
        ++seen[now];
        // What one killed process left, the next one's first save has removed.
        const auto entries = entriesIn(folder);
        ASSERT_LE(entries, 2) << "after kill " << kills;
        withLeftover += entries == 2;
        if (kills % round == 0)
            span *= 2;
    }
    days[0].save(files, path);
    EXPECT_EQ(entriesIn(folder), 1);
    EXPECT_EQ(OstrelHistory::parse(files.read(path, 1'000'000).value_or("")), days[0].points);
}

} // namespace
