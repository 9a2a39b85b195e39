// SPDX-License-Identifier: Apache-2.0
#include "hints/CompanionPolicy.h"
#include "platform/linux/LinuxKernel.h"

#include "support/TemporaryFolder.h"

#include <fstream>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Seconds = platform::Seconds;
using Date = CompanionPolicy::Date;

/// Seconds into the run.
Date at(double seconds) { return Date(Seconds(1'700'000'000 + seconds)); }

/// Readings five seconds apart unless they say otherwise.
struct Reading {
    double when;
    int level;
    bool yes = false;
    bool enabled = true;
    bool occupied = false;
};

constexpr Seconds maxGap { 12.5 };

/// Readings that follow each other, and what was before them.
struct Walk {
    const char* rule;
    std::vector<Reading> readings;
    bool presentedAfter = true; ///< the episode has had its hint
    bool presented = false; ///< the same, before
    std::optional<double> lastPresented = std::nullopt, snoozedUntil = std::nullopt;
};

const std::vector<Walk> walks {
    { "twenty seconds exactly are enough", { { 0, 2 }, { 10, 2 }, { 19.9, 2 }, { 20, 2, true } } },
    { "a change between warning and critical is the same run", { { 0, 2 }, { 10, 4 }, { 20, 2, true } } },
    { "the longest gap still belongs to the run", { { 0, 2 }, { 12.5, 2 }, { 20, 2, true } } },
    { "a longer one begins it anew", { { 0, 2 }, { 12.6, 2 }, { 22, 2 }, { 32.6, 2, true } } },
    { "a clock set back begins it anew", { { 100, 2 }, { 110, 2 }, { 50, 2 }, { 60, 2 }, { 70, 2, true } } },
    { "an unknown level begins it anew",
        { { 0, 2 }, { 10, 0 }, { 20, 2 }, { 30, 3 }, { 35, 2 }, { 45, 2 }, { 55, 2, true } } },
    { "calm begins it anew", { { 0, 4 }, { 10, 1 }, { 15, 4 }, { 25, 4 }, { 35, 4, true } } },
    { "hints that are off begin it anew",
        { { 0, 2 }, { 10, 2, false, false }, { 20, 2 }, { 30, 2 }, { 40, 2, true } } },
    { "time goes on while there is no room",
        { { 0, 2 }, { 10, 2 }, { 20, 2, false, true, true }, { 30, 2, false, true, true },
            { 40, 2, true } } },
    { .rule = "an episode has one hint, whatever comes between",
        .readings = { { 0, 2 }, { 10, 4 }, { 20, 2 }, { 5000, 2 }, { 5010, 0 }, { 5020, 2, false, false },
            { 5030, 2 }, { 5040, 2 }, { 5050, 2 } },
        .presented = true },
    { .rule = "only calm ends it",
        .readings = { { 0, 1 }, { 10, 2 }, { 20, 2 }, { 30, 2, true } },
        .presented = true },
    { "and it does while hints are off", { { 0, 1, false, false } }, false, true },
    { .rule = "the cool-down counts from the last hint",
        .readings = { { -15, 2 }, { -5, 2 }, { 5, 2 }, { 9.9, 2 }, { 10, 2, true } },
        .lastPresented = -1790 },
    { .rule = "a hint that lies ahead holds the next one back",
        .readings = { { 0, 2 }, { 10, 2 }, { 20, 2 }, { 30, 2 } },
        .presentedAfter = false,
        .lastPresented = 1e9 },
    { .rule = "a snooze ends at its moment",
        .readings = { { 0, 2 }, { 10, 2 }, { 20, 2 }, { 24.9, 2 }, { 25, 2, true } },
        .snoozedUntil = 25 },
};

TEST(CompanionPolicy, AnswersYesOnceForEachEpisodeThatLasts)
{
    for (const Walk& walk : walks) {
        CompanionPolicy policy;
        policy.episodePresented = walk.presented;
        if (walk.lastPresented)
            policy.lastPresented = at(*walk.lastPresented);
        if (walk.snoozedUntil)
            policy.snoozedUntil = at(*walk.snoozedUntil);
        for (const Reading& one : walk.readings) {
            const bool yes = policy.observe(one.level, at(one.when), maxGap, one.enabled, one.occupied);
            EXPECT_EQ(yes, one.yes) << walk.rule << ", at " << one.when;
            if (yes)
                policy.record("presented", at(one.when));
        }
        EXPECT_EQ(policy.episodePresented, walk.presentedAfter) << walk.rule;
    }
}

TEST(CompanionPolicy, ReceiptsHaveTheirConsequencesAndTheNewestThirtyAreKept)
{
    CompanionPolicy policy;
    policy.record("presented", at(0));
    policy.record("snoozed", at(10));
    EXPECT_EQ(policy.lastPresented, at(0));
    EXPECT_EQ(policy.snoozedUntil, at(1810)) << "a snooze counts from its press";
    for (int n = 0; n < 40; ++n)
        policy.record(std::to_string(n), at(100 + n));
    EXPECT_EQ(policy.lastPresented, at(0)) << "other states change nothing";
    ASSERT_EQ(policy.receipts.size(), 30u);
    EXPECT_EQ(policy.receipts.front(), (CompanionPolicy::Receipt { at(110), "10" }));
    EXPECT_EQ(policy.receipts.back().state, "39");
}

TEST(CompanionPolicy, SurvivesARestartButForTheRunThatItWasCounting)
{
    CompanionPolicy policy;
    (void)policy.observe(2, at(0), maxGap, true, false);
    policy.record("presented", at(0.125));
    policy.record("snoozed", at(7.25));
    const std::string bytes = policy.encoded();
    (void)policy.observe(2, at(5), maxGap, true, false);
    EXPECT_EQ(policy.encoded(), bytes) << "a tick alone changes no byte";

    auto again = CompanionPolicy::decoded(bytes);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->encoded(), bytes);
    EXPECT_EQ(again->receipts, policy.receipts);
    EXPECT_EQ(again->lastPresented, policy.lastPresented);
    EXPECT_EQ(again->snoozedUntil, policy.snoozedUntil);
    EXPECT_TRUE(again->episodePresented);
    again->episodePresented = false;
    again->lastPresented.reset();
    again->snoozedUntil.reset();
    EXPECT_FALSE(again->observe(2, at(21), maxGap, true, false)) << "the twenty seconds begin again";
}

TEST(CompanionPolicy, ReadsDatesAsSecondsOfThisCenturyAndTakesNothingThatIsNotWhole)
{
    const auto policy = CompanionPolicy::decoded(
        R"({"episodePresented":true,"lastPresented":0.5,"snoozedUntil":null,"receipts":[{"at":1,"state":"x"}],"more":1})");
    ASSERT_TRUE(policy);
    EXPECT_EQ(policy->lastPresented->time_since_epoch(), Seconds(978307200.5)) << "2001-01-01 in UTC";
    EXPECT_FALSE(policy->snoozedUntil);
    EXPECT_EQ(policy->receipts[0].at.time_since_epoch(), Seconds(978307201));

    for (const char* garbage : { "", "null", "[]", "{}", R"({"receipts":[]})", R"({"episodePresented":true})",
             R"({"episodePresented":1,"receipts":[]})", R"({"episodePresented":true,"receipts":{}})",
             R"({"episodePresented":true,"receipts":[{"at":1}]})",
             R"({"episodePresented":true,"receipts":[{"state":"x"}]})",
             R"({"episodePresented":true,"receipts":[{"at":"1","state":"x"}]})",
             R"({"episodePresented":true,"receipts":[7]})",
             R"({"episodePresented":true,"receipts":[],"lastPresented":"soon"})",
             R"({"episodePresented":true,"receipts":[],"snoozedUntil":1e999})",
             R"({"episodePresented":true,"receipts":[]} x)", "\xff\xfe" })
        EXPECT_FALSE(CompanionPolicy::decoded(garbage)) << garbage;

    std::string many;
    for (int n = 0; n < 10000; ++n)
        many += (n ? "," : "") + std::string(R"({"at":)") + std::to_string(n) + R"(,"state":""})";
    const auto full = CompanionPolicy::decoded(R"({"episodePresented":false,"receipts":[)" + many + "]}");
    ASSERT_TRUE(full);
    ASSERT_EQ(full->receipts.size(), 30u) << "never more than are kept";
    EXPECT_EQ(full->receipts.front().at.time_since_epoch(), Seconds(978307200 + 9970)) << "the newest";
    many.append(300000, ' ');
    EXPECT_FALSE(CompanionPolicy::decoded(R"({"episodePresented":false,"receipts":[)" + many + "]}"))
        << "nothing of ours is that long";

    // A date that no clock reaches is a date all the same, and never overflows.
    auto odd = CompanionPolicy::decoded(R"({"episodePresented":false,"receipts":[],"snoozedUntil":-1e308})");
    ASSERT_TRUE(odd);
    (void)odd->observe(2, at(0), Seconds(100), true, false);
    EXPECT_TRUE(odd->observe(2, at(30), Seconds(100), true, false));
}

TEST(CompanionPolicy, AGestureFlashesOnAChangeOfLevelOnly)
{
    CompanionPolicy::Gesture gesture;
    const std::vector<std::pair<int, int>> steps { { 2, 1 }, { 2, 0 }, { 4, 2 }, { 4, 0 }, { 1, 0 }, { 4, 2 },
        { 0, 0 }, { 3, 0 }, { 2, 1 } };
    for (const auto& [level, flashes] : steps)
        EXPECT_EQ(gesture.observe(level), flashes) << level;
    gesture.reset();
    EXPECT_EQ(gesture.observe(2), 1) << "as at first";
}

/// Between two looks of a record.
constexpr double period = 2;

/// What one look of a record says, written as the kernel does.
struct Look {
    double some = 0, full = 0;
    long total = 0, free = 0, available = 0, cached = 0;

    void layDown(const TemporaryFolder& folder) const
    {
        folder.write("pressure/memory",
            fmt::format("some avg10={:.2f} avg60=0.00 avg300=0.00 total=1\n"
                        "full avg10={:.2f} avg60=0.00 avg300=0.00 total=1\n",
                some, full));
        folder.write("meminfo",
            fmt::format("MemTotal: {} kB\nMemFree: {} kB\nMemAvailable: {} kB\nBuffers: 0 kB\nCached: {} kB\n"
                        "SwapTotal: 0 kB\nSwapFree: 0 kB\n",
                total, free, available, cached));
    }
};

std::vector<Look> record(const std::string& name)
{
    std::ifstream file(OSTREL_FIXTURES "/pressure/" + name + ".txt");
    std::vector<Look> looks;
    for (Look one; file >> one.some >> one.full >> one.total >> one.free >> one.available >> one.cached;)
        looks.push_back(one);
    return looks;
}

TEST(RecordedPressure, HintsSpeakOfShortageAndNotOfWork)
{
    struct Expected {
        const char* record;
        std::string levels; ///< as they follow each other
        int hints;
    };
    for (const auto& [name, levels, hints] : {
             Expected { "calm", "1", 0 },
             // A stall of a fifth of the time, but four fifths of the memory can be had back.
             Expected { "copy", "1", 0 },
             Expected { "build", "1", 0 },
             // Full without a stall, so only the headroom tells, in time before the end.
             Expected { "leak", "1 2 4 1", 1 },
             // What thrashes, and, in the same record, its recovery.
             Expected { "thrash", "1 2 4 1", 1 },
         }) {
        const TemporaryFolder folder;
        platform::LinuxKernel kernel(folder.path());
        CompanionPolicy policy;
        CompanionPolicy::Date now;
        std::string seen;
        int shown = 0, before = 0;
        for (const Look& look : record(name)) {
            look.layDown(folder);
            const int level = kernel.read().pressureLevel;
            if (level != before)
                seen += (seen.empty() ? "" : " ") + std::to_string(level);
            before = level;
            if (policy.observe(level, now, platform::Seconds(2.5 * period), true, false)) {
                policy.record("presented", now);
                ++shown;
            }
            now += platform::Seconds(period);
        }
        EXPECT_EQ(seen, levels) << name;
        EXPECT_EQ(shown, hints) << name;
    }
}

} // namespace
