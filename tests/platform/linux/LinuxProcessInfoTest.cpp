// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxProcessInfo.h"

#include "support/TemporaryFolder.h"

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
}

TEST(LinuxProcessInfo, AProcessorsOwnSensorsCountBesideTheZonesAndNobodyElsesAreRead)
{
    using enum ThermalState;
    struct Case {
        const char* name;
        const char* input;
        const char* alarm;
        std::optional<ThermalState> state;
    };
    const Case cases[] { { "coretemp", "94999", "0", nominal }, { "coretemp", "95000", "0", fair },
        { "coretemp", "100000", "0", serious }, { "coretemp", "99000", "1", critical },
        { "coretemp", "hot", "0", {} }, { "nvme", "100000", "1", {} } };
    for (const Case& c : cases) {
        const TemporaryFolder root;
        const LinuxProcessInfo info(root.path());
        const auto write = [&root](const std::string& file, const std::string& text) {
            root.write("sys/class/" + file, text + "\n");
        };
        write("hwmon/hwmon3/name", c.name);
        // The second core's place on a processor of two kinds of cores; the package has no limit here.
        write("hwmon/hwmon3/temp1_input", "100000");
        write("hwmon/hwmon3/temp18_input", c.input);
        write("hwmon/hwmon3/temp18_crit", "100000");
        write("hwmon/hwmon3/temp18_crit_alarm", c.alarm);
        SCOPED_TRACE(testing::Message() << c.name << " " << c.input);
        EXPECT_EQ(info.thermalState(), c.state);
        write("thermal/thermal_zone0/temp", "27800");
        EXPECT_EQ(info.thermalState(), c.state ? c.state : nominal) << "and a cool zone";
    }
}

TEST(LinuxProcessInfo, SavesPowerWhereTheFirmwareOrTheProcessorWasToldTo)
{
    const struct {
        const char* profile;
        const char* choices;
        const char* preference;
        std::optional<bool> saves;
    } cases[] { { "low-power", "low-power balanced performance", "", true },
        { "balanced", "low-power balanced performance", "", false },
        { "quiet", "quiet balanced performance", "", true },
        { "quiet", "low-power quiet balanced performance", "", false }, { "", "", "power", true },
        { "", "", "balance_power", false }, { "balanced", "", "power", true },
        { "low-power", "low-power balanced", "default", true }, { "", "", "", {} } };
    for (const auto& c : cases) {
        const TemporaryFolder root;
        for (const auto& [file, text] : { std::pair { "sys/firmware/acpi/platform_profile", c.profile },
                 { "sys/firmware/acpi/platform_profile_choices", c.choices },
                 { "sys/devices/system/cpu/cpu0/cpufreq/energy_performance_preference", c.preference } })
            if (*text)
                root.write(file, text + std::string("\n"));
        EXPECT_EQ(LinuxProcessInfo(root.path()).isLowPowerModeEnabled(), c.saves)
            << c.profile << " of " << c.choices << ", " << c.preference;
    }
}

} // namespace
