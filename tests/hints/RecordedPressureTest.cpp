// SPDX-License-Identifier: Apache-2.0
#include "hints/CompanionPolicy.h"
#include "platform/linux/LinuxKernel.h"

#include "support/TemporaryFolder.h"

#include <fstream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;

/// Between two looks of a record.
constexpr double period = 2;

/// What one look of a record says, written as the kernel does.
struct Look {
    double some = 0, full = 0;
    long total = 0, free = 0, available = 0, cached = 0;

    void layDown(const TemporaryFolder& folder) const
    {
        folder.write("pressure/memory",
            fmt::format("some avg10={:.2f} avg60=0.00 avg300=0.00 total=1\n"
                        "full avg10={:.2f} avg60=0.00 avg300=0.00 total=1\n",
                some, full));
        folder.write("meminfo",
            fmt::format("MemTotal: {} kB\nMemFree: {} kB\nMemAvailable: {} kB\nBuffers: 0 kB\nCached: {} kB\n"
                        "SwapTotal: 0 kB\nSwapFree: 0 kB\n",
                total, free, available, cached));
    }
};

std::vector<Look> record(const std::string& name)
{
    std::ifstream file(OSTREL_FIXTURES "/pressure/" + name + ".txt");
    std::vector<Look> looks;
    for (Look one; file >> one.some >> one.full >> one.total >> one.free >> one.available >> one.cached;)
        looks.push_back(one);
    return looks;
}

TEST(RecordedPressure, HintsSpeakOfShortageAndNotOfWork)
{
    struct Expected {
        const char* record;
        std::string levels; ///< as they follow each other
        int hints;
    };
    for (const auto& [name, levels, hints] : {
             Expected { "calm", "1", 0 },
             // A stall of a fifth of the time, but four fifths of the memory can be had back.
             Expected { "copy", "1", 0 },
             Expected { "build", "1", 0 },
             // Full without a stall, so only the headroom tells, in time before the end.
             Expected { "leak", "1 2 4 1", 1 },
             // What thrashes, and, in the same record, its recovery.
             Expected { "thrash", "1 2 4 1", 1 },
         }) {
        const TemporaryFolder folder;
        platform::LinuxKernel kernel(folder.path());
        CompanionPolicy policy;
        CompanionPolicy::Date now;
        std::string seen;
        int shown = 0, before = 0;
        for (const Look& look : record(name)) {
            look.layDown(folder);
            const int level = kernel.read().pressureLevel;
            if (level != before)
                seen += (seen.empty() ? "" : " ") + std::to_string(level);
            before = level;
            if (policy.observe(level, now, platform::Seconds(2.5 * period), true, false)) {
                policy.record("presented", now);
                ++shown;
            }
            now += platform::Seconds(period);
        }
        EXPECT_EQ(seen, levels) << name;
        EXPECT_EQ(shown, hints) << name;
    }
}

} // namespace
