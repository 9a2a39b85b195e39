// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxKernel.h"

#include "support/TemporaryFolder.h"

#include <cstdio>
#include <fstream>
#include <string>

#include <dirent.h>
#include <gtest/gtest.h>

namespace {

using namespace platform;

std::string recorded(const std::string& machine) { return std::string(OSTREL_FIXTURES) + "/proc/" + machine; }

int openDescriptors()
{
    int count = 0;
    DIR* folder = ::opendir("/proc/self/fd");
    while (::readdir(folder))
        ++count;
    ::closedir(folder);
    return count;
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
        LinuxKernel kernel(recorded(e.machine));
        const KernelReading reading = kernel.read();
        EXPECT_EQ(reading.physicalMemoryBytes, e.totalKiB * 1024) << e.machine;
        EXPECT_EQ(reading.usedBytes, e.usedKiB * 1024) << e.machine;
        EXPECT_EQ(reading.freeBytes, e.freeKiB * 1024) << e.machine;
        EXPECT_EQ(reading.swapTotalBytes, e.swapTotalKiB * 1024) << e.machine;
        EXPECT_EQ(reading.swapUsedBytes, 0U) << e.machine;
        EXPECT_DOUBLE_EQ(reading.load1, e.load) << e.machine;
        EXPECT_EQ(reading.pressureLevel, e.level) << e.machine;
        EXPECT_GE(reading.activeProcessorCount, 1) << e.machine;
    }
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
    const int descriptors = openDescriptors();
    folder.write("meminfo", "MemTotal: 100 kB\nMemFree: 90 kB\nMemAvailable: 5 kB\n");
    const KernelReading later = kernel.read();
    EXPECT_EQ(later.usedBytes, 10U * 1024);
    EXPECT_EQ(later.pressureLevel, 4) << "held until its release threshold";
    EXPECT_EQ(openDescriptors(), descriptors);
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

TEST(LinuxKernel, AgreesWithTheRunningKernel)
{
    LinuxKernel kernel;
    const KernelReading reading = kernel.read();
    std::ifstream file("/proc/meminfo");
    std::string name;
    std::uint64_t total = 0;
    file >> name >> total;
    EXPECT_EQ(reading.physicalMemoryBytes, total * 1024);
    EXPECT_GT(reading.usedBytes, 0U);
    EXPECT_LT(reading.usedBytes + reading.freeBytes, reading.physicalMemoryBytes + 1);
    EXPECT_GE(reading.pressureLevel, 1);
    EXPECT_TRUE(kernel.cpuTicks());
}

} // namespace
