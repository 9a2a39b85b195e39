// SPDX-License-Identifier: Apache-2.0
#include "history/Sparkline.h"

#include <algorithm>
#include <climits>
#include <limits>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Sparkline::Bar;

TEST(Sparkline, EachSampleIsABarOnTheBottomEdgeWithACapFromSeventyPercentOn)
{
    // Ten points a bar; a height of 50 makes a percent half a point.
    const std::vector samples { 0, 1, 2, 40, 69, 70, 100, 130, -5, INT_MAX, INT_MIN };
    const std::vector<std::pair<double, double>> heightAndCap { { 1, 0 }, { 1, 0 }, { 1, 0 }, { 20, 0 },
        { 34.5, 0 }, { 35, 3 }, { 50, 3 }, { 50, 3 }, { 1, 0 }, { 50, 3 }, { 1, 0 } };
    const auto bars = Sparkline::bars(samples, 110, 50);
    ASSERT_EQ(bars.size(), samples.size());
    for (std::size_t n = 0; n < bars.size(); ++n) {
        const auto& [height, cap] = heightAndCap[n];
        EXPECT_EQ(bars[n], (Bar { 10.0 * static_cast<double>(n), 9, height, cap })) << samples[n];
    }
    EXPECT_EQ(Sparkline::bars(std::vector { 100 }, 60, 2), (std::vector<Bar> { { 0, 59, 2, 2 } }))
        << "a cap is no higher than its bar";
    EXPECT_EQ(Sparkline::bars(std::vector(60, 3), 90, 2).back(), (Bar { 88.5, 1, 1, 0 }))
        << "a bar is no thinner than a point";
    EXPECT_TRUE(Sparkline::bars({}, 60, 56).empty());
    EXPECT_TRUE(Sparkline::bars(samples, 0, 56).empty());
}

TEST(Sparkline, OfAMillionSamplesAFewBarsAPixelAreDrawnAndTheHighestIsAmongThem)
{
    std::vector<int> samples(1'000'000, 5);
    samples[123'456] = 80;
    samples[123'457] = 0;
    const auto bars = Sparkline::bars(samples, 728, 50);
    EXPECT_LE(bars.size(), 4U * 728);
    EXPECT_EQ(std::ranges::count(bars, Bar { 123'456 * (728 / 1e6), 1, 40, 3 }), 1);
    EXPECT_EQ(std::ranges::count(bars, 1.0, &Bar::height), 1);
}

TEST(Sparkline, UnderThePointerItTellsTheValueAndItsAge)
{
    const std::vector samples { 140, -7, 33 };
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [x, text] :
        { std::pair { 0.0, "cpu load · 100% · 2 samples ago" }, { 9.99, "cpu load · 100% · 2 samples ago" },
            { 10.0, "cpu load · 0% · 1 sample ago" }, { 20.0, "cpu load · 33% · latest" },
            { 30.0, "cpu load · 33% · latest" }, { 1e12, "cpu load · 33% · latest" },
            { -4.0, "cpu load · 100% · 2 samples ago" }, { none, "cpu load · 100% · 2 samples ago" } })
        EXPECT_EQ(Sparkline::hoverText("cpu load", samples, x, 30), text) << x;
    EXPECT_EQ(Sparkline::hoverText("cpu load", samples, 3, 0), "");
    EXPECT_EQ(Sparkline::hoverText("cpu load", {}, 3, 30), "");
}

TEST(Sparkline, ItsValueTellsTheSamplesAsTheyAre)
{
    EXPECT_EQ(Sparkline::accessibilityValue(std::vector { 140, -7, 33 }),
        "latest 33%, low -7%, peak 140%, 3 samples");
    EXPECT_EQ(Sparkline::accessibilityValue(std::vector { 4 }), "latest 4%, low 4%, peak 4%, 1 sample");
    EXPECT_EQ(Sparkline::accessibilityValue({}), "");
}

} // namespace
