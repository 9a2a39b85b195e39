// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace ostrel {

/// A time of day on this machine.
struct ClockTime {
    int hour = 0;
    int minute = 0;
    int second = 0;

    bool operator==(const ClockTime&) const = default;
};

/// The local time of day at an instant; nothing for one that the calendar doesn't reach. Any thread.
[[nodiscard]] std::optional<ClockTime> localClockTime(std::chrono::system_clock::time_point instant);

/// The same as "HH:mm:ss"; "--:--:--" beyond the calendar.
[[nodiscard]] std::string localClockText(std::chrono::system_clock::time_point instant);

/// The same without seconds, in the locale's way of counting: "15:05", or "3:05 PM"; "--:--" beyond the
/// calendar.
[[nodiscard]] std::string localShortTimeText(std::chrono::system_clock::time_point instant);

/// The local day as "yyyy-MM-dd"; "----------" beyond the calendar.
[[nodiscard]] std::string localDayText(std::chrono::system_clock::time_point instant);

/// Local day and minute as "MMM d HH:mm", the month in English; "--" beyond the calendar.
[[nodiscard]] std::string localMinuteText(std::chrono::system_clock::time_point instant);

} // namespace ostrel
