// SPDX-License-Identifier: Apache-2.0
#include "core/LocalTime.h"

#include <cstdlib>
#include <ctime>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace std::chrono_literals;

void setZone(const char* zone)
{
    setenv("TZ", zone, 1);
    tzset();
}

TEST(LocalTime, IsThatOfTheMachinesZoneAlsoBeforeNineteenSeventy)
{
    const std::chrono::system_clock::time_point epoch;
    setZone("UTC0");
    EXPECT_EQ(localClockText(epoch + 1h + 2min + 3s + 900ms), "01:02:03");
    EXPECT_EQ(localClockText(epoch - 1ms), "23:59:59");
    setZone("XYZ-5:30");
    EXPECT_EQ(localClockText(epoch + 20h), "01:30:00");
    EXPECT_EQ(localClockTime(epoch + 20h), (ClockTime { 1, 30, 0 }));
    EXPECT_EQ(localDayText(epoch + 20h), "1970-01-02") << "the day of the zone";
    EXPECT_EQ(localShortTimeText(epoch + 20h), "01:30");
    EXPECT_EQ(localMinuteText(epoch + 20h), "Jan 2 01:30");
    EXPECT_EQ(localMinuteText(epoch - 24h * 20), "Dec 12 05:30");
    setZone("UTC0");
}

} // namespace
