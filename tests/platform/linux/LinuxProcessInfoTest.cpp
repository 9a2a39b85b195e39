// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxProcessInfo.h"

#include "support/TemporaryFolder.h"

#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace platform;

TEST(LinuxProcessInfo, TakesTheNameOutOfQuotesAndEscapes)
{
    for (const auto& [text, name] : { std::pair { "ID=x\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n",
                                          "Debian GNU/Linux 12 (bookworm)" },
             { "PRETTY_NAME='A B'", "A B" }, { "PRETTY_NAME=Plain", "Plain" },
             { "PRETTY_NAME=\"a \\\"b\\\" \\$c\"", "a \"b\" $c" }, { "PRETTY_NAME=\"\"\nNAME=x", "Linux" },
             { "PRETTY_NAME=\"", "\"" }, { "", "Linux" } })
        EXPECT_EQ(prettyOsName(text), name) << text;
}

TEST(LinuxProcessInfo, JudgesTheWorstZoneByItsOwnTripPoints)
{
    using enum ThermalState;
    const std::pair<const char*, std::optional<ThermalState>> cases[] { { "60000", nominal },
        { "80000", fair }, { "85000", serious }, { "99999", serious }, { "100000", critical },
        { "-3000", nominal }, { "hot", {} } };
    for (const auto& [temperature, state] : cases) {
        const TemporaryFolder root;
        const std::pair<const char*, std::string> files[] { { "zone0/temp", temperature },
            { "zone0/trip_point_0_type", "critical" }, { "zone0/trip_point_0_temp", "100000" },
            { "zone0/trip_point_1_type", "passive" }, { "zone0/trip_point_1_temp", "85000" },
            { "zone0/trip_point_2_type", "passive" }, { "zone0/trip_point_2_temp", "-274000" } };
        for (const auto& [name, text] : files)
            root.write("sys/class/thermal/thermal_" + std::string(name), text + "\n");
        root.write("sys/class/thermal/cooling_device0/type", "fan\n");
        EXPECT_EQ(LinuxProcessInfo(root.path()).thermalState(), state) << temperature;
        root.write("sys/class/thermal/thermal_zone1/temp", "1000\n");
        EXPECT_EQ(LinuxProcessInfo(root.path()).thermalState(), state ? state : nominal) << "and a cool zone";
    }
}

TEST(LinuxProcessInfo, SaysNothingWhereTheMachineSaysNothing)
{
    const TemporaryFolder root;
    const LinuxProcessInfo info(root.path());
    EXPECT_EQ(info.operatingSystemVersionString(), "Linux");
    EXPECT_EQ(info.systemUptime(), 0);
    EXPECT_FALSE(info.thermalState());
    EXPECT_FALSE(info.isLowPowerModeEnabled());
    EXPECT_GE(info.activeProcessorCount(), 1);
    root.write("proc/uptime", "4262.53 8433.85\n");
    EXPECT_DOUBLE_EQ(info.systemUptime(), 4262.53);
    for (const char* profile : { "low-power", "balanced" }) {
        root.write("sys/firmware/acpi/platform_profile", profile + std::string("\n"));
        EXPECT_EQ(info.isLowPowerModeEnabled(), profile == std::string("low-power"));
    }
}

} // namespace
