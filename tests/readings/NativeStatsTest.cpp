// SPDX-License-Identifier: Apache-2.0
#include "readings/NativeStats.h"
#include "readings/CPUSampler.h"
#include "readings/ReadingsLine.h"

#include "support/FakeKernel.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using platform::CpuTicks;

TEST(NativeStats, UsedMemoryIsAWholePercentageThatNeverLeavesItsRange)
{
    const std::tuple<double, double, int> cases[] { { 0, 0, 0 }, { 5, -1, 0 }, { 1, 200, 1 },
        { 0.99, 200, 0 }, { 900, 200, 100 }, { -3, 200, 0 }, { 1e300, 1, 100 } };
    for (const auto& [used, total, expected] : cases)
        EXPECT_EQ((NativeStats { .usedBytes = used, .totalBytes = total }).memPct(), expected) << used;
}

TEST(NativeStats, UsedSwapIsRoundedAndMayPassAHundred)
{
    const std::tuple<std::uint64_t, std::uint64_t, std::int64_t> cases[] { { 7, 0, 0 }, { 1, 200, 1 },
        { 1, 201, 0 }, { 3, 2, 150 } };
    for (const auto& [used, total, expected] : cases)
        EXPECT_EQ((NativeStats { .swapUsedMB = used, .swapTotalMB = total }).swapPct(), expected) << total;
}

TEST(NativeStats, PressureHasANameAtEveryLevel)
{
    for (const auto& [level, name] : { std::pair { -1, "?" }, { 0, "?" }, { 1, "normal" }, { 2, "warn" },
             { 3, "?" }, { 4, "critical" }, { 7, "critical" } })
        EXPECT_EQ(pressureName(level), name) << level;
}

TEST(CPUSampler, EachSampleCoversTheTimeSinceTheOneBefore)
{
    constexpr std::uint32_t top = std::numeric_limits<std::uint32_t>::max();
    FakeKernel kernel;
    CPUSampler sampler(kernel);
    const std::tuple<const char*, std::optional<CpuTicks>, double> steps[] {
        { "a failure at the start", std::nullopt, 0 },
        { "the first has nothing to compare with", CpuTicks { 100, 100, 100, 100 }, 0 },
        { "user, system and nice are busy", CpuTicks { 110, 120, 140, 130 }, 60 },
        { "no tick has passed", CpuTicks { 110, 120, 140, 130 }, 0 },
        { "a failure", std::nullopt, 0 },
        { "the failure has kept the state", CpuTicks { 110, 120, 150, 160 }, 75 },
        { "before the wrap", CpuTicks { top - 4, 120, top - 4, 160 }, 50 },
        { "the counters have wrapped", CpuTicks { 25, 120, 5, 160 }, 75 },
        { "a counter went backwards", CpuTicks { 20, 120, 5, 160 }, 100 },
        { "sound again", CpuTicks { 21, 120, 8, 160 }, 25 },
    };
    for (const auto& [what, ticks, expected] : steps) {
        kernel.ticks = ticks;
        EXPECT_NEAR(sampler.sample(), expected, 1e-6) << what;
    }
}

TEST(ReadingsLine, IsOneLineOfJsonInAFixedOrderWithSizesCutToWholeMebibytesAndBytesThatStay)
{
    constexpr std::uint64_t mb = 1048576;
    FakeKernel kernel;
    kernel.reading = { .swapTotalBytes = 2049 * mb - 1,
        .swapUsedBytes = 1025 * mb - 1,
        .load1 = 3.42,
        .activeProcessorCount = 8,
        .pressureLevel = 1,
        .physicalMemoryBytes = 16 * 1024 * mb,
        .usedBytes = 12'328'703'950,
        .freeBytes = 215 * mb - 1 };
    EXPECT_EQ(readingsLine(readNativeStats(kernel), 16.5),
        R"({ "memUsedGB": 11.482, "memTotalGB": 16.000, "memPct": 72, "freeMB": 214, "swapUsedMB": 1024, )"
        R"("swapTotalMB": 2048, "swapPct": 50, "load1": 3.42, "ncpu": 8, "pressureLevel": 1, "cpuPct": 17 })");
}

} // namespace
