// SPDX-License-Identifier: Apache-2.0
#include "panel/LiveSessions.h"

#include "support/FakeAlerts.h"
#include "support/FakePanel.h"
#include "support/FakePasteboard.h"
#include "support/VirtualTime.h"

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Lines = std::vector<std::string>;

OstrelData withProcesses(int count)
{
    OstrelData data;
    for (int n = 0; n < count; ++n)
        data.liveSessions.push_back({ .rss = n, .pid = std::to_string(n), .name = "claude" });
    return data;
}

struct Bench {
    Bench() { live.connect(panel); }

    VirtualTime time;
    FakeAlerts alerts;
    FakePasteboard pasteboard;
    FakePanel panel;
    LiveSessions live { { time, alerts, pasteboard } };
};

TEST(LiveSessions, ListsTheLargestFirstTwelveAPage)
{
    OstrelData data;
    data.liveSessions = { { .rss = 9, .pid = "7", .name = "codex", .cpu = 0.99 },
        { .rss = 1536, .pid = "8", .name = "claude", .cpu = 120.7 },
        { .rss = 9, .pid = "6", .name = "aider", .cpu = -0.5 } };
    Bench bench;
    Lines said;
    const LiveProcesses live = bench.live.processes(data);
    for (const auto& row : live.rows)
        said.push_back(row.text);
    EXPECT_EQ(said,
        (Lines { "claude · pid 8 · 1.5 gb · 120% CPU", "codex · pid 7 · 9 mb · 0% CPU",
            "aider · pid 6 · 9 mb · 0% CPU" }));
    EXPECT_EQ(live.title, "live CLI processes · 3 · sorted by RAM");
    EXPECT_EQ(live.nothing, "");
    EXPECT_EQ(bench.live.processes({}).nothing, "No live CLI processes in this snapshot.");
    EXPECT_FALSE(bench.live.processes(withProcesses(12)).pager);
}

TEST(LiveSessions, ThePageStaysThroughSnapshotsAndShrinksWithTheList)
{
    Bench bench;
    const OstrelData many = withProcesses(37);
    EXPECT_EQ(bench.live.processes(many).pager, (Pager { "page 1 / 4", false, true }));
    bench.live.previousPage();
    EXPECT_TRUE(bench.panel.calls.empty()) << "there is none before the first";
    for (int turn = 0; turn < 3; ++turn)
        bench.live.nextPage();
    EXPECT_EQ(bench.panel.calls, Lines(3, "render"));
    const LiveProcesses last = bench.live.processes(many);
    EXPECT_EQ(last.pager, (Pager { "page 4 / 4", true, false }));
    ASSERT_EQ(last.rows.size(), 1U);
    EXPECT_EQ(last.rows[0].proc.pid, "0");
    bench.live.nextPage();
    EXPECT_EQ(bench.live.processes(many).pager->text, "page 4 / 4");
    EXPECT_EQ(bench.live.processes(withProcesses(13)).pager, (Pager { "page 2 / 2", true, false }));
    EXPECT_FALSE(bench.live.processes(withProcesses(5)).pager);
    EXPECT_EQ(bench.live.sessionPage(), 0U);
}

TEST(LiveSessions, TellsAllOfAProcessAndCopiesItOnlyOnRequest)
{
    const OstrelData::Proc proc {
        .rss = 2048, .pid = "7", .name = "codex", .cmd = "codex\n--x 'y'", .cpu = 12.25
    };
    const std::string text
        = "2.0 gb RSS · 12.25% CPU\n\ncodex\n--x 'y'\n\nTo continue: open the matching named terminal above.";
    for (const std::size_t answer : { 0U, 1U }) {
        Bench bench;
        bench.alerts.answers = { answer };
        bench.live.showDetails(proc);
        EXPECT_TRUE(bench.alerts.asked.empty()) << "not within the press";
        bench.time.runPosted();
        ASSERT_EQ(bench.alerts.asked.size(), 1U);
        EXPECT_EQ(bench.alerts.asked[0].title, "codex · pid 7");
        EXPECT_EQ(bench.alerts.asked[0].text, text);
        EXPECT_EQ(bench.alerts.asked[0].buttons, (Lines { "Done", "Copy details" }));
        EXPECT_EQ(bench.alerts.asked[0].cancel, 0U) << "closing it copies nothing";
        EXPECT_EQ(bench.pasteboard.copied, answer == 1 ? Lines { text } : Lines {});
    }
    EXPECT_NE(detailsAlert({ .name = "a", .cpu = 3 }).text.find("0 mb RSS · 3% CPU"), std::string::npos);
}

TEST(SessionsText, TakesTheWayOfCountingFromTheNearestMethod)
{
    OstrelData data;
    EXPECT_FALSE(processCounters(data, "3s ago")) << "nothing was counted";
    for (const char* key : { "own", "codex_mcp", "chromium_x", "node" })
        data.fan.push_back({ key, 2 });
    const auto told = [&] {
        const auto counters = processCounters(data, {});
        Lines lines { counters->title };
        for (const auto& row : counters->rows)
            lines.push_back(row.toolTip);
        return lines;
    };
    const std::string title = "process counters · one collector snapshot · ";
    const std::string none = "no method published for this counter";
    EXPECT_EQ(told(), (Lines { title + "no snapshot yet", none, none, none, none }));
    data.accuracy = { { "own", "a" }, { "mcp", "b" }, { "chromium", "c" }, { "processes", "d" } };
    EXPECT_EQ(told(), (Lines { title + "no snapshot yet", "a", "b", "c", "d" }));
    data.verdict.perSess = 2.25;
    for (int n = 0; n < 10; ++n)
        data.chromiumBundles.push_back({ "b" + std::to_string(n), n });
    const auto counters = processCounters(data, "3s ago");
    EXPECT_EQ(counters->title, title + "3s ago");
    EXPECT_EQ(counters->bundles,
        "chromium helpers by bundle: b0 0 · b1 1 · b2 2 · b3 3 · b4 4 · b5 5 · b6 6 · b7 7");
    EXPECT_EQ(counters->perSession, "≈ 2.2 mcp / session");
}

TEST(SessionsText, AStormAloneIsToldInRed)
{
    EXPECT_FALSE(launchdBox({ 9, 0, 9, 9 }).alarming);
    EXPECT_TRUE(launchdBox({ 0, 1, 0, 0 }).alarming);
    EXPECT_EQ(launchdBox({ 1, 2, 3, 4 }).counts, "interval 1 · RunAtLoad storm 2 · keepAlive 3");
}

} // namespace
