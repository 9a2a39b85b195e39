// SPDX-License-Identifier: Apache-2.0
#include "readings/NativeStats.h"
#include "readings/CPUSampler.h"
#include "readings/ReadingsLine.h"

#include "support/FakeKernel.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using platform::CpuTicks;

TEST(NativeStats, SizesAreCutToWholeMebibytesAndBytesStay)
{
    constexpr std::uint64_t mb = 1048576;
    FakeKernel kernel;
    kernel.reading = { .swapTotalBytes = 2048 * mb - 1,
        .swapUsedBytes = mb - 1,
        .load1 = 3.25,
        .activeProcessorCount = 6,
        .pressureLevel = 2,
        .physicalMemoryBytes = 16 * 1024 * mb,
        .usedBytes = 5 * mb + 1,
        .freeBytes = 3 * mb - 1 };
    const NativeStats stats = readNativeStats(kernel);
    EXPECT_EQ(stats.swapTotalMB, 2047U);
    EXPECT_EQ(stats.swapUsedMB, 0U);
    EXPECT_EQ(stats.load1, 3.25);
    EXPECT_EQ(stats.ncpu, 6);
    EXPECT_EQ(stats.pressureLevel, 2);
    EXPECT_EQ(stats.usedBytes, 5.0 * mb + 1);
    EXPECT_EQ(stats.totalGB(), 16);
    EXPECT_EQ(stats.freeMB, 2);
}

TEST(NativeStats, UsedMemoryIsAWholePercentageThatNeverLeavesItsRange)
{
    const std::tuple<double, double, int> cases[] { { 0, 0, 0 }, { 5, 0, 0 }, { 5, -1, 0 }, { 0, 200, 0 },
        { 1, 200, 1 }, { 0.99, 200, 0 }, { 25, 200, 13 }, { 199, 200, 100 }, { 200, 200, 100 },
        { 900, 200, 100 }, { -3, 200, 0 }, { 1e300, 1, 100 } };
    for (const auto& [used, total, expected] : cases)
        EXPECT_EQ((NativeStats { .usedBytes = used, .totalBytes = total }).memPct(), expected)
            << used << " of " << total;
}

TEST(NativeStats, UsedSwapIsRoundedAndMayPassAHundred)
{
    const std::tuple<std::uint64_t, std::uint64_t, std::int64_t> cases[] { { 0, 0, 0 }, { 7, 0, 0 },
        { 0, 2048, 0 }, { 1024, 2048, 50 }, { 1, 200, 1 }, { 1, 201, 0 }, { 25, 200, 13 }, { 3, 2, 150 } };
    for (const auto& [used, total, expected] : cases)
        EXPECT_EQ((NativeStats { .swapUsedMB = used, .swapTotalMB = total }).swapPct(), expected)
            << used << " of " << total;
}

TEST(NativeStats, PressureHasANameAtEveryLevel)
{
    const std::pair<int, const char*> cases[] { { std::numeric_limits<int>::min(), "?" }, { -1, "?" },
        { 0, "?" }, { 1, "normal" }, { 2, "warn" }, { 3, "?" }, { 4, "critical" }, { 7, "critical" } };
    for (const auto& [level, name] : cases)
        EXPECT_EQ(pressureName(level), name) << level;
}

TEST(CPUSampler, EachSampleCoversTheTimeSinceTheOneBefore)
{
    constexpr std::uint32_t top = std::numeric_limits<std::uint32_t>::max();
    FakeKernel kernel;
    CPUSampler sampler(kernel);
    const std::tuple<const char*, std::optional<CpuTicks>, double> steps[] {
        { "the first has nothing to compare with", CpuTicks { 100, 100, 100, 100 }, 0 },
        { "user, system and nice are busy", CpuTicks { 110, 120, 140, 130 }, 60 },
        { "no tick has passed", CpuTicks { 110, 120, 140, 130 }, 0 },
        { "only idle", CpuTicks { 110, 120, 150, 130 }, 0 },
        { "a failure", std::nullopt, 0 },
        { "the failure has kept the state", CpuTicks { 110, 120, 160, 160 }, 75 },
        { "before the wrap", CpuTicks { top - 4, 120, top - 4, 160 }, 50 },
    };
    for (const auto& [what, ticks, expected] : steps) {
        kernel.ticks = ticks;
        EXPECT_NEAR(sampler.sample(), expected, 0.001) << what;
    }
    kernel.ticks = CpuTicks { 25, 120, 5, 160 };
    EXPECT_DOUBLE_EQ(sampler.sample(), 75) << "the counters have wrapped";
    kernel.ticks = CpuTicks { 20, 120, 5, 160 };
    EXPECT_DOUBLE_EQ(sampler.sample(), 100) << "a counter went backwards";
    kernel.ticks = CpuTicks { 21, 120, 8, 160 };
    EXPECT_DOUBLE_EQ(sampler.sample(), 25) << "sound again";
}

TEST(CPUSampler, AFailedFirstReadingLeavesTheNextOneTheFirst)
{
    FakeKernel kernel;
    CPUSampler sampler(kernel);
    kernel.ticks.reset();
    EXPECT_EQ(sampler.sample(), 0);
    kernel.ticks = CpuTicks { 5000, 0, 5000, 0 };
    EXPECT_EQ(sampler.sample(), 0);
}

TEST(ReadingsLine, IsOneLineOfJsonInAFixedOrder)
{
    const NativeStats stats { .swapUsedMB = 1024,
        .swapTotalMB = 2048,
        .load1 = 3.42,
        .ncpu = 8,
        .pressureLevel = 1,
        .usedBytes = 11.482 * NativeStats::bytesPerGB,
        .totalBytes = 16 * NativeStats::bytesPerGB,
        .freeMB = 214 };
    EXPECT_EQ(readingsLine(stats, 16.5),
        R"({ "memUsedGB": 11.482, "memTotalGB": 16.000, "memPct": 72, "freeMB": 214, "swapUsedMB": 1024, )"
        R"("swapTotalMB": 2048, "swapPct": 50, "load1": 3.42, "ncpu": 8, "pressureLevel": 1, "cpuPct": 17 })");
    EXPECT_EQ(readingsLine({}, 0),
        R"({ "memUsedGB": 0.000, "memTotalGB": 0.000, "memPct": 0, "freeMB": 0, "swapUsedMB": 0, )"
        R"("swapTotalMB": 0, "swapPct": 0, "load1": 0.00, "ncpu": 0, "pressureLevel": 0, "cpuPct": 0 })");
}

} // namespace
