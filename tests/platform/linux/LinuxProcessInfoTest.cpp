// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxProcessInfo.h"

#include "support/TemporaryFolder.h"

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
    struct Case {
        const char* temperature;
        std::optional<ThermalState> state;
    };
    for (const Case& c : { Case { "60000", ThermalState::nominal }, Case { "80000", ThermalState::fair },
             Case { "85000", ThermalState::serious }, Case { "99999", ThermalState::serious },
             Case { "100000", ThermalState::critical }, Case { "-3000", ThermalState::nominal },
             Case { "hot", std::nullopt } }) {
        const TemporaryFolder root;
        const std::string zone = "sys/class/thermal/thermal_zone0/";
        root.write(zone + "temp", std::string(c.temperature) + "\n");
        root.write(zone + "trip_point_0_type", "critical\n");
        root.write(zone + "trip_point_0_temp", "100000\n");
        root.write(zone + "trip_point_1_type", "passive\n");
        root.write(zone + "trip_point_1_temp", "85000\n");
        root.write(zone + "trip_point_2_type", "passive\n");
        root.write(zone + "trip_point_2_temp", "-274000\n");
        root.write("sys/class/thermal/cooling_device0/type", "fan\n");
        EXPECT_EQ(LinuxProcessInfo(root.path()).thermalState(), c.state) << c.temperature;
        root.write("sys/class/thermal/thermal_zone1/temp", "1000\n");
        if (c.state) {
            EXPECT_EQ(LinuxProcessInfo(root.path()).thermalState(), c.state)
                << "a cool second zone changes nothing";
        }
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
    root.write("sys/firmware/acpi/platform_profile", "low-power\n");
    EXPECT_DOUBLE_EQ(info.systemUptime(), 4262.53);
    EXPECT_EQ(info.isLowPowerModeEnabled(), true);
    root.write("sys/firmware/acpi/platform_profile", "balanced\n");
    EXPECT_EQ(info.isLowPowerModeEnabled(), false);
}

} // namespace
