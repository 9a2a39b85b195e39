// SPDX-License-Identifier: Apache-2.0
#include "core/Iso8601.h"

#include <fmt/format.h>

namespace ostrel {

std::string iso8601(std::chrono::system_clock::time_point time)
{
    using namespace std::chrono;
    const auto second = floor<seconds>(time);
    const auto day = floor<days>(second);
    const year_month_day date(day);
    const hh_mm_ss clock(second - day);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), clock.hours().count(),
        clock.minutes().count(), clock.seconds().count());
}

} // namespace ostrel
