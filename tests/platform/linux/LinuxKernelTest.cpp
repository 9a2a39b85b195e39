// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxKernel.h"

#include "platform/linux/PressureLevel.h"
#include "platform/linux/ProcFields.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

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

TEST(PressureLevel, IsReachedOnlyWhereStallAndHeadroomAgreeAndHeldUntilItsOwnRelease)
{
    struct Case {
        double some, full, available, swapFree;
        int previous, level;
    };
    const Case cases[] { // Plenty of room: a stall alone is reclaim after a big copy.
        { 80, 60, 0.50, 1, 1, 1 },
        // Little room, no stall: full and healthy, unless the swap is nearly gone too.
        { 0, 0, 0.09, 0.25, 1, 1 }, { 0, 0, 0.09, 0.24, 1, 2 }, { 0, 0, 0.10, 0, 1, 1 },
        // Each way into warning, at its edge.
        { 10, 0, 0.49, 1, 1, 2 }, { 9.9, 2.9, 0.49, 1, 1, 1 }, { 0, 3, 0.49, 1, 1, 2 },
        // Each way into critical, at its edge.
        { 10, 10, 0.19, 1, 1, 4 }, { 10, 9.9, 0.19, 1, 1, 2 }, { 10, 10, 0.20, 1, 1, 2 },
        { 0, 0, 0.039, 1, 1, 4 }, { 0, 0, 0.04, 1, 1, 1 }, { 10, 0, 0.09, 0.09, 1, 4 },
        { 10, 0, 0.09, 0.10, 1, 2 }, { 10, 0, 0.10, 0.09, 1, 2 },
        // Held where it wouldn't be reached, and let go one step at a time.
        { 0, 6, 0.24, 1, 4, 4 }, { 0, 6, 0.24, 1, 2, 2 }, { 0, 5.9, 0.24, 1, 4, 2 }, { 0, 0, 0.059, 1, 4, 4 },
        { 6, 0, 0.13, 0.13, 4, 4 }, { 6, 0, 0.13, 0.14, 4, 2 }, { 6, 0, 0.59, 1, 2, 2 },
        { 5.9, 1.9, 0.59, 1, 2, 1 }, { 0, 2, 0.59, 1, 2, 2 }, { 6, 0, 0.60, 1, 2, 1 },
        { 0, 0, 0.13, 0.29, 2, 2 }, { 0, 0, 0.13, 0.30, 2, 1 }, { 6, 0, 0.59, 1, 4, 2 },
        { 6, 0, 0.59, 1, 1, 1 }, { 6, 0, 0.59, 1, 0, 1 }
    };
    for (const Case& c : cases)
        EXPECT_EQ(pressureLevel(
                      MemoryStall { c.some, c.full }, MemoryHeadroom { c.available, c.swapFree }, c.previous),
            c.level)
            << c.some << ' ' << c.full << ' ' << c.available << ' ' << c.swapFree << " after " << c.previous;
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

TEST(LinuxKernel, ReadsRecordedMachines)
{
    struct Expected {
        const char* machine;
        std::uint64_t totalKiB, usedKiB, freeKiB, swapTotalKiB;
        double load;
        int level;
    };
    // Used memory was worked out by hand from each record: total less free, buffers, file cache, reclaimable
    // slab.
    for (const Expected& e : { Expected { "vm-6.18", 24684084, 118940, 23896772, 0, 0.12, 1 },
             Expected { "laptop-2.6.32", 1544040, 543748, 497636, 3227640, 1.24, 1 },
             Expected { "server-48g", 48588200, 42851828, 2121064, 0, 0, 1 },
             Expected { "no-such-machine", 0, 0, 0, 0, 0, 0 } }) {
        const KernelReading reading = LinuxKernel(OSTREL_FIXTURES "/proc/" + std::string(e.machine)).read();
        EXPECT_EQ(std::tuple(reading.physicalMemoryBytes, reading.usedBytes, reading.freeBytes,
                      reading.swapTotalBytes, reading.swapUsedBytes),
            std::tuple(e.totalKiB * 1024, e.usedKiB * 1024, e.freeKiB * 1024, e.swapTotalKiB * 1024, 0U))
            << e.machine;
        EXPECT_EQ(std::tuple(reading.load1, reading.pressureLevel), std::tuple(e.load, e.level)) << e.machine;
        EXPECT_GE(reading.activeProcessorCount, 1) << e.machine;
    }
    EXPECT_GT(LinuxKernel().read().usedBytes, 0U) << "the running kernel";
}

TEST(LinuxKernel, ReadsTheSameOpenFilesAnewEachTimeAndFindsThoseThatComeLater)
{
    const TemporaryFolder folder;
    LinuxKernel kernel(folder.path());
    EXPECT_EQ(kernel.read().physicalMemoryBytes, 0U);
    EXPECT_FALSE(kernel.cpuTicks());
    folder.write("meminfo", "MemTotal: 100 kB\nMemFree: 40 kB\nMemAvailable: 3 kB\n");
    folder.write("stat", "cpu  1 2 3 4000\n");
    EXPECT_EQ(kernel.read().usedBytes, 60U * 1024);
    EXPECT_EQ(kernel.read().pressureLevel, 4);
    const auto descriptors = entriesIn("/proc/self/fd");
    folder.write("meminfo", "MemTotal: 100 kB\nMemFree: 90 kB\nMemAvailable: 5 kB\n");
    const KernelReading later = kernel.read();
    EXPECT_EQ(later.usedBytes, 10U * 1024);
    EXPECT_EQ(later.pressureLevel, 4) << "held until its release threshold";
    EXPECT_EQ(entriesIn("/proc/self/fd"), descriptors);
}

TEST(LinuxKernel, SmoothsASmallStepBackOfTheIdleCounterAndFollowsAReset)
{
    const TemporaryFolder folder;
    LinuxKernel kernel(folder.path());
    for (const auto& [line, idle] : { std::pair { "cpu  0 0 0 5000 10\n", 5010U },
             { "cpu  0 0 0 5001 5\n", 5010U }, { "cpu  0 0 0 5009 5\n", 5014U }, { "cpu  0 0 0 20 1\n", 21U },
             { "cpu  4294967297 0 0 4294967300 0\n", 4U } }) {
        folder.write("stat", line);
        const auto ticks = kernel.cpuTicks();
        ASSERT_TRUE(ticks) << line;
        EXPECT_EQ(ticks->idle, idle) << line;
    }
    EXPECT_EQ(kernel.cpuTicks()->user, 1U) << "cut to 32 bits";
}

} // namespace
