// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxProcessInfo.h"

#include "platform/linux/ActiveProcessors.h"
#include "platform/linux/ProcFields.h"
#include "platform/linux/SmallFile.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <utility>

namespace platform {

namespace {

/// A machine this near to the point at which it slows down is warm, in thousandths of a degree.
constexpr int fairMargin = 5000;
constexpr int mostTripPoints = 16;
constexpr int mostSensors = 128;

std::string_view firstLine(std::string_view text) { return text.substr(0, text.find('\n')); }

std::optional<int> milliDegrees(const std::string& path)
{
    const auto text = readSmallFile(path);
    if (!text)
        return std::nullopt;
    int value = 0;
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), value);
    return error == std::errc() ? std::optional(value) : std::nullopt;
}

std::optional<ThermalState> zoneState(const std::string& zone)
{
    const auto temperature = milliDegrees(zone + "/temp");
    if (!temperature)
        return std::nullopt;
    auto worst = ThermalState::nominal;
    for (int point = 0; point < mostTripPoints; ++point) {
        const std::string trip = zone + "/trip_point_" + std::to_string(point);
        const auto kind = readSmallFile(trip + "_type");
        if (!kind)
            break;
        const auto limit = milliDegrees(trip + "_temp");
        if (!limit || *limit <= 0)
            continue;
        const auto word = firstLine(*kind);
        auto state = ThermalState::nominal;
        if ((word == "hot" || word == "critical") && *temperature >= *limit)
            state = ThermalState::critical;
        else if (word == "passive" && *temperature >= *limit)
            state = ThermalState::serious;
        else if (word == "passive" && *temperature >= *limit - fairMargin)
            state = ThermalState::fair;
        worst = std::max(worst, state);
    }
    return worst;
}

/// One sensor of a processor, which slows down from its critical temperature up and raises an alarm where
/// that doesn't help.
std::optional<ThermalState> sensorState(const std::string& sensor)
{
    const auto temperature = milliDegrees(sensor + "_input");
    const auto limit = milliDegrees(sensor + "_crit");
    if (!temperature || !limit || *limit <= 0)
        return std::nullopt;
    if (milliDegrees(sensor + "_crit_alarm").value_or(0) != 0)
        return ThermalState::critical;
    if (*temperature >= *limit)
        return ThermalState::serious;
    return *temperature >= *limit - fairMargin ? ThermalState::fair : ThermalState::nominal;
}

std::optional<ThermalState> worse(std::optional<ThermalState> a, std::optional<ThermalState> b)
{
    if (!a || !b)
        return a ? a : b;
    return std::max(*a, *b);
}

/// The worst of a processor's sensors. Those of disks and graphics stay unread: it wakes them.
std::optional<ThermalState> monitorState(const std::string& monitor)
{
    const auto name = readSmallFile(monitor + "/name");
    if (!name || firstLine(*name) != "coretemp")
        return std::nullopt;
    std::optional<ThermalState> worst;
    for (int number = 1; number <= mostSensors; ++number)
        worst = worse(worst, sensorState(monitor + "/temp" + std::to_string(number)));
    return worst;
}

/// The worst of a folder's entries whose names begin like that; each is judged by `state`.
template <typename State>
std::optional<ThermalState> worstOf(const std::string& folder, std::string_view prefix, State state)
{
    std::optional<ThermalState> worst;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().filename().string().starts_with(prefix))
            worst = worse(worst, state(entry->path().string()));
    return worst;
}

/// Whether the firmware saves power. Where it has no such profile, its quiet one stands for it.
std::optional<bool> profileSaves(const std::string& acpi)
{
    const auto profile = readSmallFile(acpi + "/platform_profile");
    if (!profile)
        return std::nullopt;
    const std::string_view word = firstLine(*profile);
    const std::string choices = readSmallFile(acpi + "/platform_profile_choices").value_or("");
    return word == "low-power" || (word == "quiet" && choices.find("low-power") == std::string::npos);
}

/// Whether the processor was told to prefer saving power above all.
std::optional<bool> processorSaves(const std::string& frequency)
{
    const auto preference = readSmallFile(frequency + "/energy_performance_preference");
    if (!preference)
        return std::nullopt;
    return firstLine(*preference) == "power";
}

} // namespace

std::string prettyOsName(std::string_view osRelease)
{
    constexpr std::string_view key = "PRETTY_NAME=";
    while (!osRelease.empty()) {
        const auto line = firstLine(osRelease);
        osRelease.remove_prefix(std::min(osRelease.size(), line.size() + 1));
        if (!line.starts_with(key))
            continue;
        auto value = line.substr(key.size());
        if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'')
            && value.back() == value.front())
            value = value.substr(1, value.size() - 2);
        std::string name;
        for (std::size_t at = 0; at < value.size(); ++at) {
            if (value[at] == '\\' && at + 1 < value.size())
                ++at;
            name += value[at];
        }
        if (!name.empty())
            return name;
    }
    return "Linux";
}

LinuxProcessInfo::LinuxProcessInfo(std::string root)
    : root_(std::move(root))
{
}

std::string LinuxProcessInfo::operatingSystemVersionString() const
{
    auto text = readSmallFile(root_ + "/etc/os-release");
    if (!text)
        text = readSmallFile(root_ + "/usr/lib/os-release");
    return prettyOsName(text.value_or(""));
}

double LinuxProcessInfo::systemUptime() const
{
    return parseLeadingNumber(readSmallFile(root_ + "/proc/uptime").value_or(""));
}

std::optional<ThermalState> LinuxProcessInfo::thermalState() const
{
    return worse(worstOf(root_ + "/sys/class/thermal", "thermal_zone", zoneState),
        worstOf(root_ + "/sys/class/hwmon", "hwmon", monitorState));
}

std::optional<bool> LinuxProcessInfo::isLowPowerModeEnabled() const
{
    const auto profile = profileSaves(root_ + "/sys/firmware/acpi");
    const auto processor = processorSaves(root_ + "/sys/devices/system/cpu/cpu0/cpufreq");
    if (!profile && !processor)
        return std::nullopt;
    return profile.value_or(false) || processor.value_or(false);
}

int LinuxProcessInfo::activeProcessorCount() const { return activeProcessors(); }

} // namespace platform
