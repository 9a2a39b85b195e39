// SPDX-License-Identifier: Apache-2.0
#include "hints/CompanionPolicy.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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

struct Walk {
    const char* rule;
    CompanionPolicy before;
    std::vector<Reading> readings;
    bool presentedAfter = false;
};

CompanionPolicy presented(double when)
{
    CompanionPolicy policy;
    policy.lastPresented = at(when);
    return policy;
}

CompanionPolicy spent()
{
    CompanionPolicy policy;
    policy.episodePresented = true;
    return policy;
}

CompanionPolicy snoozed(double until)
{
    CompanionPolicy policy;
    policy.snoozedUntil = at(until);
    return policy;
}

const std::vector<Walk> walks {
    { "twenty seconds exactly are enough", {}, { { 0, 2 }, { 10, 2 }, { 19.9, 2 }, { 20, 2, true } }, true },
    { "a change between warning and critical is the same run", {}, { { 0, 2 }, { 10, 4 }, { 20, 2, true } },
        true },
    { "the longest gap still belongs to the run", {}, { { 0, 2 }, { 12.5, 2 }, { 20, 2, true } }, true },
    { "a longer one begins it anew", {}, { { 0, 2 }, { 12.6, 2 }, { 22, 2 }, { 32.6, 2, true } }, true },
    { "a clock set back begins it anew", {},
        { { 100, 2 }, { 110, 2 }, { 50, 2 }, { 60, 2 }, { 70, 2, true } }, true },
    { "an unknown level begins it anew", {},
        { { 0, 2 }, { 10, 0 }, { 20, 2 }, { 30, 3 }, { 35, 2 }, { 45, 2 }, { 55, 2, true } }, true },
    { "calm begins it anew", {}, { { 0, 4 }, { 10, 1 }, { 15, 4 }, { 25, 4 }, { 35, 4, true } }, true },
    { "hints that are off begin it anew", {},
        { { 0, 2 }, { 10, 2, false, false }, { 20, 2 }, { 30, 2 }, { 40, 2, true } }, true },
    { "time goes on while there is no room", {},
        { { 0, 2 }, { 10, 2 }, { 20, 2, false, true, true }, { 30, 2, false, true, true }, { 40, 2, true } },
        true },
    { "an episode has one hint, whatever comes between", spent(),
        { { 0, 2 }, { 10, 4 }, { 20, 2 }, { 5000, 2 }, { 5010, 0 }, { 5020, 2, false, false }, { 5030, 2 },
            { 5040, 2 }, { 5050, 2 } },
        true },
    { "only calm ends it", spent(), { { 0, 1 }, { 10, 2 }, { 20, 2 }, { 30, 2, true } }, true },
    { "and it does while hints are off", spent(), { { 0, 1, false, false } } },
    { "the cool-down counts from the last hint", presented(-1790),
        { { -15, 2 }, { -5, 2 }, { 5, 2 }, { 9.9, 2 }, { 10, 2, true } }, true },
    { "a hint that lies ahead holds the next one back", presented(1e9),
        { { 0, 2 }, { 10, 2 }, { 20, 2 }, { 30, 2 } } },
    { "a snooze ends at its moment", snoozed(25),
        { { 0, 2 }, { 10, 2 }, { 20, 2 }, { 24.9, 2 }, { 25, 2, true } }, true },
};

TEST(CompanionPolicy, AnswersYesOnceForEachEpisodeThatLasts)
{
    for (const Walk& walk : walks) {
        CompanionPolicy policy = walk.before;
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

} // namespace
