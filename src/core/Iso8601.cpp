// SPDX-License-Identifier: Apache-2.0
#include "core/Iso8601.h"

#include <fmt/format.h>

namespace ostrel {

std::string iso8601(std::chrono::system_clock::time_point instant)
{
    const auto second = std::chrono::floor<std::chrono::seconds>(instant);
    const auto day = std::chrono::floor<std::chrono::days>(second);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(second - day);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), time.hours().count(),
        time.minutes().count(), time.seconds().count());
}

} // namespace ostrel
