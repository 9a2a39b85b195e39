// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/PressureLevel.h"

#include <gtest/gtest.h>

namespace {

using platform::MemoryHeadroom;
using platform::MemoryStall;
using platform::pressureLevel;

struct Case {
    double some;
    double full;
    double available;
    double swapFree;
    int previous;
    int level;
};

TEST(PressureLevel, IsReachedOnlyWhereStallAndHeadroomAgreeAndHeldUntilItsOwnRelease)
{
    for (const Case& c : { // Plenty of room: a stall alone is reclaim after a big copy.
             Case { 80, 60, 0.50, 1, 1, 1 },
             // Little room, no stall: full and healthy, unless the swap is nearly gone too.
             Case { 0, 0, 0.09, 0.25, 1, 1 }, Case { 0, 0, 0.09, 0.24, 1, 2 }, Case { 0, 0, 0.10, 0, 1, 1 },
             // Each way into warning, at its edge.
             Case { 10, 0, 0.49, 1, 1, 2 }, Case { 9.9, 2.9, 0.49, 1, 1, 1 }, Case { 0, 3, 0.49, 1, 1, 2 },
             // Each way into critical, at its edge.
             Case { 10, 10, 0.19, 1, 1, 4 }, Case { 10, 9.9, 0.19, 1, 1, 2 }, Case { 10, 10, 0.20, 1, 1, 2 },
             Case { 0, 0, 0.039, 1, 1, 4 }, Case { 0, 0, 0.04, 1, 1, 1 }, Case { 10, 0, 0.09, 0.09, 1, 4 },
             Case { 10, 0, 0.09, 0.10, 1, 2 }, Case { 10, 0, 0.10, 0.09, 1, 2 },
             // Held where it wouldn't be reached, and let go one step at a time.
             Case { 0, 6, 0.24, 1, 4, 4 }, Case { 0, 6, 0.24, 1, 2, 2 }, Case { 0, 5.9, 0.24, 1, 4, 2 },
             Case { 0, 0, 0.059, 1, 4, 4 }, Case { 6, 0, 0.13, 0.13, 4, 4 }, Case { 6, 0, 0.13, 0.14, 4, 2 },
             Case { 6, 0, 0.59, 1, 2, 2 }, Case { 5.9, 1.9, 0.59, 1, 2, 1 }, Case { 0, 2, 0.59, 1, 2, 2 },
             Case { 6, 0, 0.60, 1, 2, 1 }, Case { 0, 0, 0.13, 0.29, 2, 2 }, Case { 0, 0, 0.13, 0.30, 2, 1 },
             Case { 6, 0, 0.59, 1, 4, 2 }, Case { 6, 0, 0.59, 1, 1, 1 }, Case { 6, 0, 0.59, 1, 0, 1 } }) {
        EXPECT_EQ(pressureLevel(
                      MemoryStall { c.some, c.full }, MemoryHeadroom { c.available, c.swapFree }, c.previous),
            c.level)
            << c.some << ' ' << c.full << ' ' << c.available << ' ' << c.swapFree << " after " << c.previous;
    }
}

TEST(PressureLevel, GoesByWhatCanBeRead)
{
    EXPECT_EQ(pressureLevel(std::nullopt, std::nullopt, 4), 0);
    EXPECT_EQ(pressureLevel(std::nullopt, MemoryHeadroom { 0.03, 0 }, 1), 4);
    EXPECT_EQ(pressureLevel(std::nullopt, MemoryHeadroom { 0.09, 0.2 }, 1), 2);
    EXPECT_EQ(pressureLevel(std::nullopt, MemoryHeadroom { 0.3, 0 }, 4), 1);
    EXPECT_EQ(pressureLevel(MemoryStall { 0, 0 }, std::nullopt, 1), 1);
    EXPECT_EQ(pressureLevel(MemoryStall { 10, 0 }, std::nullopt, 1), 2);
    EXPECT_EQ(pressureLevel(MemoryStall { 10, 10 }, std::nullopt, 1), 4);
}

} // namespace
