// SPDX-License-Identifier: Apache-2.0
#include "history/HistoryGraph.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

TEST(HistoryGraph, SamplesStandFromTheRightEdgeInThirtiethsUntilThereAreMore)
{
    // 290 points wide and 100 high: a thirtieth's step is 10.
    const auto at = [](std::size_t index, std::size_t count) {
        const auto line = HistoryGraph::line(std::vector<double>(count, 50), 290, 100);
        return line.at(index).x;
    };
    for (const auto& [index, count, x] : { std::tuple { 0U, 1U, 290.0 }, { 0U, 2U, 280.0 }, { 1U, 2U, 290.0 },
             { 0U, 30U, 0.0 }, { 7U, 30U, 70.0 }, { 29U, 30U, 290.0 }, { 0U, 59U, 0.0 }, { 2U, 59U, 10.0 },
             { 58U, 59U, 290.0 }, { 0U, 120U, 0.0 }, { 119U, 120U, 290.0 } })
        EXPECT_DOUBLE_EQ(at(index, count), x) << index << " of " << count;
    EXPECT_TRUE(HistoryGraph::line({}, 290, 100).empty());
}

TEST(HistoryGraph, AHundredPercentLiesATenthBelowTheTopAndAnythingBeyondAtTheLimit)
{
    for (const auto& [value, y] : { std::pair { 0.0, 90.0 }, { 100.0, 10.0 }, { 50.0, 50.0 }, { 37.5, 60.0 },
             { 140.0, 10.0 }, { -3.0, 90.0 }, { infinite, 10.0 }, { -infinite, 90.0 }, { nan, 90.0 } })
        EXPECT_NEAR(HistoryGraph::line(std::vector { value }, 290, 100).at(0).y, y, 1e-9) << value;
}

TEST(HistoryGraph, OfAMillionSamplesAFewPointsAPixelAreDrawnAndEveryPeakIsAmongThem)
{
    std::vector<double> samples(1'000'000, 50);
    samples[333'333] = 100;
    samples[777'776] = 0;
    samples[777'777] = 100;
    samples[999'998] = 3;
    const auto line = HistoryGraph::line(samples, 352, 100);
    EXPECT_LE(line.size(), 4U * 352);
    EXPECT_EQ(line.front().x, 0);
    EXPECT_EQ(line.back(), (HistoryGraph::Point { 352, 50 }));
    for (const auto& [index, y] :
        { std::pair { 333'333U, 10.0 }, { 777'776U, 90.0 }, { 777'777U, 10.0 }, { 999'998U, 87.6 } }) {
        const double x = index * 352.0 / 999'999;
        std::size_t found = 0;
        for (std::size_t at = 0; at < line.size(); ++at) {
            found += std::abs(line[at].x - x) < 1e-6 && std::abs(line[at].y - y) < 1e-6 ? 1 : 0;
            ASSERT_TRUE(at == 0 || line[at - 1].x < line[at].x) << "in their order";
        }
        EXPECT_EQ(found, 1U) << index;
    }
    // A day of minutes is far from that.
    EXPECT_EQ(HistoryGraph::line(std::vector<double>(1440, 1), 352, 76).size(), 1440U);
    EXPECT_LE(HistoryGraph::line(samples, nan, 76).size(), 4U) << "a width that is none has room for little";
}

TEST(HistoryGraph, TheBoundaryStandsAtItsSampleUnlessNothingLiesBesideIt)
{
    using Boundary = std::optional<std::size_t>;
    for (const auto& [boundary, count, x] :
        { std::tuple { Boundary(), 30U, -1.0 }, { Boundary(0), 30U, -1.0 }, { Boundary(1), 30U, 10.0 },
            { Boundary(29), 30U, 290.0 }, { Boundary(30), 30U, -1.0 }, { Boundary(31), 30U, -1.0 },
            { Boundary(1), 2U, 290.0 }, { Boundary(1), 0U, -1.0 } })
        EXPECT_DOUBLE_EQ(HistoryGraph::boundaryX(boundary, count, 290).value_or(-1), x)
            << boundary.value_or(99) << " of " << count;
    EXPECT_EQ(
        HistoryGraph::accessibilityLabel("CPU", 120, 81), "CPU · 120 minutes · 81 restored, 39 this run");
    EXPECT_EQ(HistoryGraph::accessibilityLabel("CPU", 7, {}), "CPU · 7 minutes · 0 restored, 7 this run");
    EXPECT_EQ(HistoryGraph::accessibilityLabel("CPU", 7, 9), "CPU · 7 minutes · 7 restored, 0 this run");
}

TEST(HistoryGraph, ThePointerMeetsTheNearestSample)
{
    for (const std::size_t count : { 1U, 2U, 29U, 30U, 31U, 120U, 1440U }) {
        const auto line = HistoryGraph::line(std::vector<double>(count, 1), 352, 76);
        const double half = 352 / (std::max(30.0, static_cast<double>(count)) - 1) / 2;
        for (std::size_t index = 0; index < count; ++index)
            for (const double beside : { -0.98 * half, 0.0, 0.98 * half })
                ASSERT_EQ(HistoryGraph::nearest(line[index].x + beside, count, 352), index) << count;
    }
    for (const auto& [x, index] :
        { std::pair { -1e9, 0U }, { 1e9, 6U }, { infinite, 6U }, { -infinite, 0U }, { nan, 0U } })
        EXPECT_EQ(HistoryGraph::nearest(x, 7, 352), index) << x;
    for (const auto& [count, width] : { std::pair { 0U, 352.0 }, { 7U, 0.0 }, { 7U, -1.0 }, { 7U, nan } })
        EXPECT_EQ(HistoryGraph::nearest(3, count, width), std::nullopt) << count << " " << width;
}

TEST(HistoryGraph, UnderThePointerItTellsTheValueAndTheLocalTimeOfThatMinute)
{
    // Two hours east, in a calendar that ends somewhere.
    const auto local = [](std::int64_t minute) -> std::optional<ClockTime> {
        if (minute > 1'000'000'000)
            return std::nullopt;
        return ClockTime { static_cast<int>((minute / 60 + 2) % 24), static_cast<int>(minute % 60) };
    };
    const std::vector<double> samples { 12.5, 140, -3, nan, 7, 8 };
    const std::vector<std::int64_t> minutes { 725, 1319, 1320, 1321, INT64_MAX };
    const auto at = [&](std::size_t index) {
        return HistoryGraph::hoverText(
            "CPU", samples, minutes, 290.0 - 10 * static_cast<double>(5 - index), 290, local);
    };
    for (const auto& [index, text] : { std::pair { 0U, "CPU · 13% · 14:05" }, { 1U, "CPU · 100% · 23:59" },
             { 2U, "CPU · 0% · 00:00" }, { 3U, "CPU · 0% · 00:01" }, { 4U, "CPU · 7%" }, { 5U, "CPU · 8%" } })
        EXPECT_EQ(at(index), text);
    EXPECT_EQ(HistoryGraph::hoverText("CPU", {}, {}, 3, 290, local), "");
}

} // namespace
