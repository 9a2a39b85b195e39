// SPDX-License-Identifier: Apache-2.0
#include "core/LocalTime.h"

#include <array>
#include <cstddef>
#include <ctime>
#include <string_view>

#include <fmt/format.h>
#include <langinfo.h>

namespace ostrel {

namespace {

std::optional<std::tm> localParts(std::chrono::system_clock::time_point instant)
{
    const auto second = std::chrono::floor<std::chrono::seconds>(instant);
    const std::time_t seconds = std::chrono::system_clock::to_time_t(second);
    std::tm parts {};
    if (!localtime_r(&seconds, &parts))
        return std::nullopt;
    return parts;
}

} // namespace

std::optional<ClockTime> localClockTime(std::chrono::system_clock::time_point instant)
{
    const auto parts = localParts(instant);
    if (!parts)
        return std::nullopt;
    return ClockTime { parts->tm_hour, parts->tm_min, parts->tm_sec };
}

std::string localClockText(std::chrono::system_clock::time_point instant)
{
    const auto time = localClockTime(instant);
    if (!time)
        return "--:--:--";
    return fmt::format("{:02}:{:02}:{:02}", time->hour, time->minute, time->second);
}

std::string localShortTimeText(std::chrono::system_clock::time_point instant)
{
    const auto time = localClockTime(instant);
    if (!time)
        return "--:--";
    const std::string_view style = nl_langinfo(T_FMT);
    const auto countsBy = [&](std::string_view sign) { return style.find(sign) != std::string_view::npos; };
    if (!countsBy("%r") && !countsBy("%I") && !countsBy("%l"))
        return fmt::format("{:02}:{:02}", time->hour, time->minute);
    constexpr int half = 12;
    return fmt::format("{}:{:02} {}", time->hour % half == 0 ? half : time->hour % half, time->minute,
        nl_langinfo(time->hour < half ? AM_STR : PM_STR));
}

std::string localDayText(std::chrono::system_clock::time_point instant)
{
    const auto parts = localParts(instant);
    if (!parts)
        return "----------";
    return fmt::format("{:04}-{:02}-{:02}", parts->tm_year + 1900, parts->tm_mon + 1, parts->tm_mday);
}

std::string localMinuteText(std::chrono::system_clock::time_point instant)
{
    constexpr std::array<std::string_view, 12> months { "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul",
        "Aug", "Sep", "Oct", "Nov", "Dec" };
    const auto parts = localParts(instant);
    if (!parts)
        return "--";
    return fmt::format("{} {} {:02}:{:02}", months[static_cast<std::size_t>(parts->tm_mon)], parts->tm_mday,
        parts->tm_hour, parts->tm_min);
}

} // namespace ostrel
