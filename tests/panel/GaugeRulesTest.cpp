// SPDX-License-Identifier: Apache-2.0
#include "panel/GaugeRules.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

TEST(GaugeRules, ItStartsAndEndsSlowly)
{
    for (const auto& [t, eased] :
        { std::pair { 0.0, 0.0 }, { 0.25, 0.0625 }, { 0.5, 0.5 }, { 0.75, 0.9375 }, { 1.0, 1.0 } })
        EXPECT_DOUBLE_EQ(GaugeRules::easeInOut(t), eased) << t;
}

TEST(GaugeRules, ALevelIsMarkedOnlyWhereColourMustNotTellAlone)
{
    for (const auto& [level, wanted, mark] : { std::tuple { "crit", true, "▲ " }, { "warn", true, "△ " },
             { "normal", true, "" }, { "", true, "" }, { "crit", false, "" }, { "warn", false, "" } })
        EXPECT_EQ(GaugeRules::levelMark(level, wanted), mark) << level;
    EXPECT_EQ(GaugeRules::valueText("▲ ", 84.5), "▲ 85%");
    EXPECT_EQ(GaugeRules::valueText("", 84.49), "84%");
}

TEST(GaugeRules, APercentageBeyondTheRingIsShownAtTheLimit)
{
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (const auto& [pct, shown] : { std::pair { 140.0, 100.0 }, { -3.0, 0.0 }, { 41.5, 41.5 },
             { infinite, 100.0 }, { -infinite, 0.0 }, { std::nan(""), 0.0 } })
        EXPECT_EQ(GaugeRules::shown(pct), shown) << pct;
    for (const auto& [pct, sweep] :
        { std::pair { 0.1, 0.0 }, { 0.11, 0.396 }, { 25.0, 90.0 }, { 100.0, 360.0 } })
        EXPECT_NEAR(GaugeRules::sweep(pct), sweep, 1e-9) << pct;
}

TEST(GaugeRules, TheTextStandsAroundHalfARadiusBelowTheCentre)
{
    const auto [centre, radius, valueBottom, captionBottom] = GaugeRules::geometry(84);
    EXPECT_EQ(centre, 42);
    EXPECT_EQ(radius, 39);
    EXPECT_EQ(valueBottom, 42 + 19.5 - 5);
    EXPECT_EQ(captionBottom, 42 + 19.5 + 11);
}

TEST(GaugeMotion, ReachesItsValueInTwentySixPicturesAndNeverTurnsBack)
{
    GaugeMotion motion;
    motion.stand(80);
    ASSERT_TRUE(motion.setOut(20, true));
    EXPECT_EQ(motion.displayed(), 80) << "it sets out from where it is";
    double before = 80;
    int pictures = 1;
    for (; motion.step(); ++pictures) {
        EXPECT_LT(motion.displayed(), before);
        EXPECT_GT(motion.displayed(), 20);
        before = motion.displayed();
        if (pictures == 12) {
            EXPECT_NEAR(before, 80 - 60 * 4 * std::pow(12 / 25.2, 3), 1e-9);
        }
    }
    EXPECT_EQ(pictures, 26) << "0.42 s at sixty a second";
    EXPECT_EQ(motion.displayed(), 20);
    EXPECT_FALSE(motion.moving());
}

TEST(GaugeMotion, TooSmallAWayOrLessMovementIsNoWayAtAll)
{
    for (const auto& [to, moves, travels] : { std::tuple { 50.39, true, false }, { 50.41, true, true },
             { 49.61, true, false }, { 49.59, true, true }, { 90.0, false, false }, { 190.0, true, true } }) {
        GaugeMotion motion;
        motion.stand(50);
        EXPECT_EQ(motion.setOut(to, moves), travels) << to;
        EXPECT_EQ(motion.displayed(), travels ? 50 : to) << to;
        motion.arrive();
        EXPECT_EQ(motion.displayed(), std::min(to, 100.0));
    }
}

} // namespace
