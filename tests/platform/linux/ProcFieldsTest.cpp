// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/ProcFields.h"

#include <string>
#include <tuple>

#include <gtest/gtest.h>

namespace {

using namespace platform;

TEST(MemInfo, TakesTheFieldsByTheirWholeNames)
{
    const MemInfo info = parseMemInfo("XMemTotal: 1 kB\nMemTotal: 4000 kB\nSwapCached: 7 kB\nCached: 300 kB\n"
                                      "MemFree:\t1000 kB\nBuffers: 100\nShmem: 50 kB\nSReclaimable: 20 kB");
    EXPECT_EQ(info.memTotal, 4000U);
    EXPECT_EQ(info.cached, 300U);
    EXPECT_EQ(info.usedKiB(), 4000U - 1000 - 100 - 250 - 20);
    EXPECT_FALSE(info.memAvailable);
}

TEST(MemInfo, GivesTheZeroForWhatIsHostileOrMissing)
{
    for (const char* text : { "", "MemTotal:", "MemTotal: -5 kB\nMemFree: 1 kB",
             "MemTotal: many kB\nMemFree: 1 kB", "MemTotal: 99999999999999999999999999 kB\nMemFree: 1 kB",
             "MemTotal: 9007199254740993 kB\nMemFree: 1 kB", "MemTotal: 100 kB", "MemFree: 100 kB",
             "\n\n\xff\xfe MemTotal",
             // More caches than memory, and more free than total, never wrap.
             "MemTotal: 10 kB\nMemFree: 5 kB\nCached: 900 kB", "SwapTotal: 10 kB\nSwapFree: 20 kB",
             "SwapTotal: 10 kB\n" }) {
        const MemInfo info = parseMemInfo(text);
        EXPECT_EQ(info.usedKiB() + info.swapUsedKiB(), 0U) << text;
    }
    for (const char* text : { "MemTotal: 0 kB\nMemAvailable: 5 kB", "MemAvailable: 5 kB" })
        EXPECT_FALSE(parseMemInfo(text).headroom()) << text;
}

TEST(MemInfo, HeadroomIsTheKernelsEstimateOrElseFreeMemoryAndCaches)
{
    const std::tuple<const char*, double, double> cases[] {
        { "MemTotal: 1000 kB\nMemFree: 1 kB\nMemAvailable: 250 kB\nSwapTotal: 200 kB\nSwapFree: 50 kB", 0.25,
            0.25 },
        { "MemTotal: 1000 kB\nMemFree: 100 kB\nBuffers: 50 kB\nCached: 90 kB\nShmem: 40 kB", 0.2, 0 }
    };
    for (const auto& [text, available, swapFree] : cases) {
        const auto headroom = parseMemInfo(text).headroom();
        ASSERT_TRUE(headroom) << text;
        EXPECT_DOUBLE_EQ(headroom->available, available) << text;
        EXPECT_DOUBLE_EQ(headroom->swapFree, swapFree) << text;
    }
}

TEST(CpuLine, AddsInterruptsAndStolenTimeToSystemAndDiskWaitToIdleAndNeedsItsClassicFields)
{
    const auto times = parseCpuLine("cpu  1 2 3 4 5 6 7 8 900 901\ncpu0 1 1 1 1\n");
    ASSERT_TRUE(times);
    EXPECT_EQ(std::tuple(times->user, times->nice, times->system, times->idle),
        std::tuple(1U, 2U, 3U + 6 + 7 + 8, 4U + 5));
    EXPECT_TRUE(parseCpuLine("cpu  1 2 3 4"));
    for (const char* text : { "", "cpu", "cpu ", "cpu  1 2 3", "cpu0 1 2 3 4", "cpu  1 2 -3 4",
             "cpu  a b c d", "cpu  99999999999999999999 2 3 4", "intr 1\ncpu  1 2 3 4" })
        EXPECT_FALSE(parseCpuLine(text)) << text;
}

TEST(MemoryStall, ReadsBothTenSecondAverages)
{
    const auto stall = parseMemoryStall("some avg10=12.34 avg60=1.00 avg300=0.00 total=5\n"
                                        "full avg10=0.50 avg60=0.00 avg300=0.00 total=1");
    ASSERT_TRUE(stall);
    EXPECT_DOUBLE_EQ(stall->some10, 12.34);
    EXPECT_DOUBLE_EQ(stall->full10, 0.5);
    for (const char* text :
        { "", "some avg10=1.0 avg60=0", "some avg10=x\nfull avg10=0.0", "full avg10=1.0\n",
            "some avg10=-1\nfull avg10=0", "some avg10=nan\nfull avg10=0", "some avg60=1\nfull avg10=0" })
        EXPECT_FALSE(parseMemoryStall(text)) << text;
}

TEST(LeadingNumber, IsZeroForWhatIsNoSoundNumber)
{
    for (const auto& [text, value] :
        { std::pair { "0.52 0.58 0.59 1/467 13", 0.52 }, { "  7", 7.0 }, { "", 0.0 }, { "-1.0", 0.0 },
            { "inf", 0.0 }, { "nan", 0.0 }, { "1e999", 0.0 }, { "x1", 0.0 }, { "3.5", 3.5 } })
        EXPECT_DOUBLE_EQ(parseLeadingNumber(text), value) << text;
}

} // namespace
