// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxKernel.h"

#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

#include <string>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace platform;

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
