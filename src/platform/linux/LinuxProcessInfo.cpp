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

constexpr int milliDegreesBelowPassive = 5000;
constexpr int mostTripPoints = 16;

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
        else if (word == "passive" && *temperature >= *limit - milliDegreesBelowPassive)
            state = ThermalState::fair;
        worst = std::max(worst, state);
    }
    return worst;
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
    std::optional<ThermalState> worst;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(root_ + "/sys/class/thermal", error), end;
         !error && entry != end; entry.increment(error)) {
        if (!entry->path().filename().string().starts_with("thermal_zone"))
            continue;
        if (const auto state = zoneState(entry->path().string()))
            worst = std::max(worst.value_or(*state), *state);
    }
    return worst;
}

std::optional<bool> LinuxProcessInfo::isLowPowerModeEnabled() const
{
    const auto profile = readSmallFile(root_ + "/sys/firmware/acpi/platform_profile");
    if (!profile)
        return std::nullopt;
    return firstLine(*profile) == "low-power";
}

int LinuxProcessInfo::activeProcessorCount() const { return activeProcessors(); }

} // namespace platform
