// SPDX-License-Identifier: Apache-2.0
#include "history/OstrelHistory.h"

#include "platform/linux/LinuxFileManager.h"
#include "support/FakeFileManager.h"
#include "support/ForkedProcess.h"
#include "support/TemporaryHome.h"
#include "support/Waiting.h"

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cmath>
#include <csignal>
#include <ctime>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace std::string_literals;

constexpr std::int64_t present = 28'000'000; // a minute in 2023

platform::Instant at(std::int64_t minute, double seconds = 0)
{
    return platform::Instant(std::chrono::duration_cast<platform::Instant::duration>(
        std::chrono::minutes(minute) + platform::Seconds(seconds)));
}

/// A history that holds the minutes from `first` to `last`, the first `restored` of them from the file.
OstrelHistory filled(std::int64_t first, std::int64_t last, std::size_t restored)
{
    OstrelHistory history;
    for (std::int64_t minute = first; minute <= last; ++minute)
        history.points.push_back({ .minute = minute, .cpu = minute % 100 });
    history.restored = restored;
    return history;
}

TEST(OstrelHistory, AMinuteIsTheWholePartAlsoBefore1970)
{
    const std::tuple<std::int64_t, double, std::int64_t> cases[] { { 0, 0, 0 }, { 0, 59.999, 0 }, { 1, 0, 1 },
        { 0, -0.001, -1 }, { -1, 0, -1 }, { -1, -0.5, -2 }, { present, 59, present } };
    for (const auto& [minute, seconds, expected] : cases)
        EXPECT_EQ(OstrelHistory::minute(at(minute, seconds)), expected) << minute << " and " << seconds;
}

TEST(OstrelHistory, TheLastReadingOfAMinuteWinsAndOnlyTheFirstAsksForASave)
{
    OstrelHistory history;
    EXPECT_TRUE(history.record(1, 2, 3, 4.5, at(present, 1)));
    EXPECT_FALSE(history.record(10, 20, 30, 0.25, at(present, 59)));
    ASSERT_EQ(history.points.size(), 1U);
    EXPECT_EQ(history.points[0], (OstrelHistory::Point { present, 10, 20, 30, 0.25 }));
    // What no machine has is held at the ends.
    history.record(140, -3, INT64_MAX, -1.0, at(present));
    EXPECT_EQ(history.points[0], (OstrelHistory::Point { present, 100, 0, 100, 0.0 }));
    history.record(0, 0, 0, std::nan(""), at(present));
    EXPECT_EQ(history.points[0].load, 0.0);
    EXPECT_TRUE(history.record(0, 0, 0, 0, at(present + 3)));
    EXPECT_EQ(history.points.size(), 2U);
    EXPECT_EQ(history.spanMinutes(), 4);
}

TEST(OstrelHistory, AClockThatWasSetBackFreezesTheRecordUntilItHasCaughtUp)
{
    OstrelHistory history = filled(present - 2, present, 1);
    const auto before = history.points;
    for (std::int64_t back = 300; back > 0; --back)
        EXPECT_FALSE(history.record(99, 99, 99, 9, at(present - back)));
    EXPECT_EQ(history.points, before);
    EXPECT_FALSE(history.record(99, 99, 99, 9, at(present)));
    EXPECT_TRUE(history.record(99, 99, 99, 9, at(present + 1)));
    EXPECT_EQ(history.points.size(), 4U);
}

TEST(OstrelHistory, HoldsTheLast1440MinutesAndForgetsTheRestoredFirst)
{
    struct Case {
        const char* what;
        OstrelHistory before;
        std::size_t kept;
        std::int64_t oldest;
        std::size_t restored;
    };
    const Case cases[] { { "exactly 1440 old goes", filled(present - 1440, present - 1439, 2), 1,
                             present - 1439, 1 },
        { "full, nothing due", filled(present - 1439, present, 700), 1440, present - 1439, 700 },
        { "too many of the future", filled(present, present + 1999, 2000), 1440, present + 560, 1440 },
        { "restored beyond the points", filled(present, present, 9), 1, present, 1 },
        { "all too old", filled(present - 9000, present - 8000, 500), 0, 0, 0 },
        { "nothing held", OstrelHistory(), 0, 0, 0 } };
    for (const Case& c : cases) {
        OstrelHistory history = c.before;
        history.prune(present);
        ASSERT_EQ(history.points.size(), c.kept) << c.what;
        EXPECT_EQ(history.restored, c.restored) << c.what;
        EXPECT_EQ(history.points.empty() ? 0 : history.points.front().minute, c.oldest) << c.what;
    }
    OstrelHistory recording = filled(present - 1439, present, 1440);
    EXPECT_TRUE(recording.record(1, 1, 1, 1, at(present + 1)));
    EXPECT_EQ(recording.points.size(), 1440U);
    EXPECT_EQ(recording.restored, 1439U);
    EXPECT_EQ(recording.liveCount(), 1U);
    // A machine that slept over a day begins anew.
    EXPECT_TRUE(recording.record(1, 1, 1, 1, at(present + 1500)));
    EXPECT_EQ(recording.points.size(), 1U);
    EXPECT_EQ(recording.restored, 0U);
}

TEST(OstrelHistory, TheWindowIsMeasuredFromTheNewestPoint)
{
    OstrelHistory gap;
    for (const std::int64_t minute : { present - 200, present - 119, present - 60, present })
        gap.points.push_back({ .minute = minute });
    for (const auto& [minutes, size] :
        { std::pair { 120, 3U }, { 119, 2U }, { 1, 1U }, { 0, 0U }, { 1440, 4U } })
        EXPECT_EQ(gap.window(minutes).size(), size) << minutes;
    EXPECT_EQ(OstrelHistory().window(120).size(), 0U);
}

TEST(OstrelHistory, TheCaptionTellsTheRestoredFromThisRunsPoints)
{
    struct Case {
        OstrelHistory history;
        std::optional<std::size_t> boundary;
        const char* caption;
    };
    // The first minute is held twice: by the file and, after a quick restart, once more.
    OstrelHistory twice = filled(present, present + 1, 2);
    twice.points[1].minute = present;
    OstrelHistory sleeper = filled(present - 500, present - 401, 100);
    for (std::int64_t minute = present - 30; minute <= present; ++minute)
        sleeper.points.push_back({ .minute = minute });
    const Case cases[] { { {}, {}, "empty · the first minute is being recorded" },
        { filled(present, present, 0), {}, "1 min shown · 0 restored + 1 this run · 1 min kept of 1440" },
        { filled(present, present, 1), {}, "1 min shown · 1 restored + 0 this run · 1 min kept of 1440" },
        // At launch with a full file, and shortly after.
        { filled(present - 1439, present, 1440), {},
            "120 min shown · 120 restored + 0 this run · 1440 min kept of 1440" },
        { filled(present - 1439, present, 1437), 117,
            "120 min shown · 117 restored + 3 this run · 1440 min kept of 1440" },
        // The window opens with the last restored, and with the first of this run.
        { filled(present - 300, present, 182), 1,
            "120 min shown · 1 restored + 119 this run · 301 min kept of 1440" },
        { filled(present - 300, present, 181), {},
            "120 min shown · 0 restored + 120 this run · 301 min kept of 1440" },
        { sleeper, {}, "31 min shown · 0 restored + 31 this run · 131 min kept of 1440" },
        { twice, {}, "1 min shown · 2 restored + 0 this run · 2 min kept of 1440" } };
    for (const Case& c : cases) {
        EXPECT_EQ(c.history.liveBoundary(120), c.boundary) << c.caption;
        EXPECT_EQ(historyCaption(c.history, historyWindowMinutes), c.caption);
    }
}

TEST(OstrelHistory, ALineThatIsNoPointIsSkippedAndTheOthersStay)
{
    using Point = OstrelHistory::Point;
    const std::string deep(100'000, '[');
    const std::pair<std::string, Point> points[] { { R"({"m":5,"cpu":1,"swap":2,"ram":3,"load":4.25})",
                                                       { 5, 1, 2, 3, 4.25 } },
        { R"({"m":5})", { 5 } }, { R"({"m":12.0})", { 12 } },
        { R"({"m":9223372036854775807})", { INT64_MAX } }, { R"({"m":-7})", { -7 } },
        { R"({"m":5,"cpu":140,"swap":-3,"ram":9.9,"load":-2})", { 5, 140, -3, 9, -2 } },
        { R"({"m":5,"cpu":-9.9,"swap":true,"ram":"7","load":"1"})", { 5, -9 } },
        { R"({"m":5,"load":1e308})", { 5, 0, 0, 0, 1e308 } }, { R"({"m":5,"m":6})", { 6 } },
        { R"({"m":5,"extra":{"deep":[1]}})", { 5 } }, { " \t{ \"m\" : 5 }\r", { 5 } },
        { R"({"m":5,"cpu":")" + std::string(10'000'000, 'x') + R"("})", { 5 } } };
    const std::string skipped[] { R"({"m":12.5})", R"({"cpu":1})", R"({"m":"5"})", R"({"m":null})",
        R"({"m":true})", R"({"m":9223372036854775808})", R"({"m":5,"cpu":1e19})",
        R"({"m":5,"ram":99999999999999999999})", R"({"m":5,"load":1e309})", "{\"m\":5}\0{\"m\":6}"s,
        "{\"m\":5,\"x\":\"\xff\"}", R"([{"m":5}])", "5", "null", "garbage", R"({"m":5)", R"({"m":5}{"m":6})",
        deep, R"({"m":5,"x":)" + deep };
    const Point good { 1, 9, 9, 9, 9 };
    const auto expect = [&good](const std::string& line, std::vector<Point> expected) {
        std::ranges::sort(expected, {}, &Point::minute);
        const std::string text = "{\"m\":1,\"cpu\":9,\"swap\":9,\"ram\":9,\"load\":9}\n\n" + line;
        EXPECT_EQ(OstrelHistory::parse(text), expected) << line.substr(0, 60);
        EXPECT_EQ(OstrelHistory::parse(text + "\n"), expected) << line.substr(0, 60);
    };
    for (const auto& [line, point] : points)
        expect(line, { good, point });
    for (const std::string& line : skipped)
        expect(line, { good });
    for (const char* text : { "", "\n\n\n" })
        EXPECT_TRUE(OstrelHistory::parse(text).empty());
}

TEST(OstrelHistory, LinesOutOfOrderAreSortedAndEqualMinutesKeepTheirOrder)
{
    const auto points = OstrelHistory::parse(
        "{\"m\":3,\"cpu\":1}\r\n{\"m\":1,\"cpu\":2}\r\n{\"m\":3,\"cpu\":3}\r\n{\"m\":2,\"cpu\":4}");
    EXPECT_EQ(points, (std::vector<OstrelHistory::Point> { { 1, 2 }, { 2, 4 }, { 3, 1 }, { 3, 3 } }));
}

TEST(OstrelHistory, EachPointIsOneLineInTheFixedOrderWithTwoDecimals)
{
    OstrelHistory history;
    EXPECT_EQ(history.serialized(), "");
    history.points
        = { { 28'000'000, 1, 2, 3, 1.005 }, { 28'000'001, 100, 0, 60, 12.999 }, { -1, -2, 0, 0, 1e308 } };
    EXPECT_EQ(history.serialized(),
        "{\"m\":28000000,\"cpu\":1,\"swap\":2,\"ram\":3,\"load\":1.00}\n"
        "{\"m\":28000001,\"cpu\":100,\"swap\":0,\"ram\":60,\"load\":13.00}\n"
        "{\"m\":-1,\"cpu\":-2,\"swap\":0,\"ram\":0,\"load\":1000000000000000.00}\n");
}

TEST(OstrelHistory, TheFileReadsTheSameUnderALocaleWithADecimalComma)
{
    ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8"));
    OstrelHistory history;
    history.points = { { present, 1, 2, 3, 4.5 } };
    const std::string text = history.serialized();
    const auto points = OstrelHistory::parse(text);
    std::setlocale(LC_ALL, "C");
    EXPECT_NE(text.find("\"load\":4.50}"), std::string::npos);
    EXPECT_EQ(points, history.points);
}

TEST(OstrelHistory, LoadingCountsAllThatIsLeftAsRestoredAndWhatIsNoTextOrMissingGivesNothing)
{
    FakeFileManager files;
    filled(present - 1500, present, 0).save(files, "/h");
    const OstrelHistory loaded = OstrelHistory::load(files, "/h", at(present));
    EXPECT_EQ(loaded.points, filled(present - 1439, present, 0).points);
    EXPECT_EQ(loaded.restored, 1440U);
    EXPECT_EQ(loaded.liveCount(), 0U);
    files.contents["/bad"] = files.contents["/h"] + "\xff\n";
    files.contents["/huge"] = std::string(17'000'000, '\n') + files.contents["/h"];
    for (const char* path : { "/bad", "/absent", "/huge", "" })
        EXPECT_TRUE(OstrelHistory::load(files, path, at(present)).points.empty()) << path;
    loaded.save(files, OstrelHistory::defaultPath(""));
    EXPECT_EQ(files.writes, 1) << "nothing without a home";
}

TEST(OstrelHistory, MinutesAtTheEndsOfTheRangeDoNotOverflow)
{
    OstrelHistory history;
    history.points = { { .minute = INT64_MIN }, { .minute = -1 }, { .minute = INT64_MAX } };
    EXPECT_EQ(history.spanMinutes(), INT64_MAX);
    EXPECT_EQ(history.window(120).size(), 1U);
    EXPECT_EQ(historyCaption(history, 120), "1 min shown · 0 restored + 1 this run · 3 min kept of 1440");
    EXPECT_FALSE(history.record(1, 1, 1, 1, at(present)));
    history.prune(present);
    EXPECT_EQ(history.points.size(), 1U);
    history.points = { { .minute = INT64_MIN } };
    EXPECT_EQ(history.liveBoundary(INT64_MAX), std::nullopt);
}

/// A full day, unlike another one in every line and in length.
OstrelHistory day(std::int64_t first, std::int64_t percent)
{
    OstrelHistory history;
    for (std::int64_t i = 0; i < 1440 - percent; ++i)
        history.points.push_back({ first + i, percent, percent, percent, 1.5 });
    return history;
}

/// Lets the kernel kill this process, as hard as it can, that long from now.
void killMyselfIn(std::chrono::nanoseconds delay)
{
    sigevent event {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer {};
    const itimerspec when { {},
        { delay / std::chrono::seconds(1), (delay % std::chrono::seconds(1)).count() } };
    ASSERT_EQ(::timer_create(CLOCK_MONOTONIC, &event, &timer), 0);
    ASSERT_EQ(::timer_settime(timer, 0, &when, nullptr), 0);
}

TEST(HistoryFile, AKillAtAnyMomentOfASaveLeavesTheOldFileOrTheNew)
{
    constexpr int round = 300;
    const TemporaryHome home;
    const std::string path = OstrelHistory::defaultPath(home.path());
    const std::string folder = platform::parentDirectory(path);
    const OstrelHistory days[] { day(28'000'000, 3), day(29'000'000, 70) };
    const std::string texts[] { days[0].serialized(), days[1].serialized() };
    platform::LinuxFileManager files;
    days[0].save(files, path);
    const auto begin = std::chrono::steady_clock::now();
    days[0].save(files, path);
    // The moments of a round are spread evenly over the time of a few saves. On a busy machine that time says
    // little about the next save's, so further rounds follow, over longer times, until each kind of moment
    // has been met: inside a save, and on either side of a replacement.
    std::chrono::nanoseconds span = 2 * (std::chrono::steady_clock::now() - begin);
    int withLeftover = 0;
    int seen[2] {};
    std::size_t now = 0;
    for (int kills = 1; kills <= round || std::min({ withLeftover, seen[0], seen[1] }) <= 10; ++kills) {
        ASSERT_LT(kills, 10 * round) << withLeftover << ' ' << seen[0] << ' ' << seen[1];
        ForkedProcess saver([&] {
            killMyselfIn(span * (kills % round + 1) / round);
            // The first save is never of what the file holds already.
            for (std::size_t next = 1 - now;; next = 1 - next)
                days[next].save(files, path);
        });
        ASSERT_EQ(saver.wait(), -SIGKILL);
        const auto text = files.read(path, 1'000'000);
        ASSERT_TRUE(text && (*text == texts[0] || *text == texts[1]))
            << "after kill " << kills << " the file holds " << (text ? text->size() : 0) << " bytes";
        now = *text == texts[0] ? 0 : 1;
        ++seen[now];
        // What one killed process left, the next one's first save has removed.
        const auto entries = entriesIn(folder);
        ASSERT_LE(entries, 2) << "after kill " << kills;
        withLeftover += entries == 2;
        if (kills % round == 0)
            span *= 2;
    }
    days[0].save(files, path);
    EXPECT_EQ(entriesIn(folder), 1);
    EXPECT_EQ(OstrelHistory::parse(files.read(path, 1'000'000).value_or("")), days[0].points);
}

} // namespace
