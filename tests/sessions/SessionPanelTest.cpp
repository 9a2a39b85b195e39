// SPDX-License-Identifier: Apache-2.0
#include "sessions/SessionPanel.h"

#include "core/LocalTime.h"
#include "core/Text.h"

#include "support/FakeMachine.h"
#include "support/FakePanel.h"

#include <tuple>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Lines = std::vector<std::string>;

constexpr const char* unavailable = "Terminal source unavailable. Refresh to retry.";

/// The block on an open sessions tab, whose script answers what the test prepared.
struct Bench : FakeMachine {
    Bench()
    {
        bundle.resources.emplace("collectors/session_bridge.py", "/opt/session_bridge.py");
        panel.tab = OstrelMode::sessions;
        sessions->connect(panel);
    }

    /// Reads the list, which the script answers with this.
    void read(const std::string& output, int status = 0)
    {
        answer(output, status);
        sessions->refresh();
        deliver();
    }
    void open(const std::string& output)
    {
        answer(output);
        sessions->openTerminal("a 'b' $(c)\n--d");
        deliver();
    }

    [[nodiscard]] const std::string& status() const { return sessions->state().status; }
    [[nodiscard]] std::string told(std::size_t count) const
    {
        return std::to_string(count) + " terminal tabs · read " + localShortTimeText(time.now());
    }
    /// The titles on the present page.
    [[nodiscard]] Lines titles()
    {
        Lines all;
        const auto rows = sessions->body().rows;
        for (const SessionRow& row : rows)
            all.push_back(row.title);
        return all;
    }
    std::size_t renders() { return std::exchange(panel.calls, {}).size(); }

    FakePanel panel;
    std::optional<SessionPanel> sessions { std::in_place,
        SessionPanel::Platform { time, globalQueue, bundle, time, children } };
};

std::string terminals(int count)
{
    Lines rows;
    for (int n = 0; n < count; ++n)
        rows.push_back(R"({"title":"t)" + std::to_string(100 + n) + R"(","handle":"h","connected":true})");
    return R"({"ok":true,"terminals":[)" + joined(rows, ",") + "]}";
}

TEST(SessionPanel, TakesEachKeyOfATerminalOrItsDefault)
{
    const std::pair<std::string, SessionRow> cases[] {
        { R"("title":"a","handle":"h","agentIdentity":"codex","executionHostId":"local","connected":true,
            "worktreePath":"/w")",
            { "a", "codex · local · connected · /w", true, "h" } },
        { "", { "Untitled terminal", "shell · unknown host · disconnected · ", false, {} } },
        { R"("title":7,"handle":["h"],"agentIdentity":null,"executionHostId":{},"connected":1,
            "worktreePath":false)",
            { "Untitled terminal", "shell · unknown host · disconnected · ", false, {} } },
        { R"("title":"","agentIdentity":"","connected":"true")",
            { "", " · unknown host · disconnected · ", false, {} } },
        { R"("title":"a\nb\u0000","connected":true)",
            { "a b ", "shell · unknown host · connected · ", true, {} } },
    };
    for (const auto& [keys, row] : cases) {
        Bench bench;
        bench.read(R"({"ok":true,"terminals":[{)" + keys + "}]}");
        EXPECT_EQ(bench.status(), bench.told(1));
        EXPECT_EQ(bench.sessions->body().rows, std::vector { row }) << keys;
    }
}

TEST(SessionPanel, AListIsTakenWholeOrNotAtAll)
{
    struct Case {
        std::string output;
        int status;
        std::string said; ///< empty: the number of terminals
        Lines titles, notes;
    };
    const std::string huge(100U << 20, 'x');
    const Case cases[] {
        { R"({"ok":true,"terminals":[{"title":"b"},{},{"title":"B"},{"title":"a"},3,null,{"title":"é"}]})", 0,
            "", { "Untitled terminal", "B", "a", "b", "é" }, {} },
        { R"({"ok":true})", 0, "", {}, {} },
        { R"({"ok":true,"terminals":{"a":1},"notes":["one",2,"three\nfour"]})", 0, "", {},
            { "one", "three four" } },
        { R"({"ok":true,"terminals":[{"title":"late"}]})", 15, "", { "late" }, {} },
        { R"({"ok":false,"error":"No terminal can be listed.","terminals":[{}],"notes":["n"]})", 0,
            "No terminal can be listed.", {}, {} },
        { R"({"ok":"true","error":["x"]})", 0, "Unavailable", {}, {} },
        { R"({"terminals":[{}]})", 0, "Unavailable", {}, {} },
        { "[]", 0, unavailable, {}, {} },
        { "", 1, unavailable, {}, {} },
        { R"({"ok":true)", 0, unavailable, {}, {} },
        { R"({"ok":true,"terminals":[{"title":")" + huge + "\"}]}", 0, unavailable, {}, {} },
        { R"({"ok":false,"error":")" + huge.substr(0, 1U << 20) + "\"}", 0, huge.substr(0, 600), {}, {} },
    };
    for (const Case& c : cases) {
        Bench bench;
        bench.read(terminals(20));
        bench.sessions->nextPage();
        bench.sessions->nextPage();
        EXPECT_EQ(bench.titles().size(), 4U);
        bench.read(c.output, c.status);
        const std::string shown = c.output.substr(0, 60);
        EXPECT_EQ(bench.status(), c.said.empty() ? bench.told(bench.sessions->state().rows.size()) : c.said)
            << shown;
        EXPECT_EQ(bench.titles(), c.titles) << shown;
        EXPECT_EQ(bench.sessions->body().notes, c.notes) << shown;
        EXPECT_FALSE(bench.sessions->state().busy);
    }
}

TEST(SessionPanel, ReadsAtTheFirstDrawingAndThenOnlyOnAPress)
{
    Bench bench;
    EXPECT_EQ(bench.status(), "Read the current Orca terminal list to continue an existing session.");
    const SessionBody first = bench.sessions->body();
    EXPECT_EQ(first.status + first.refresh, "Reading terminal metadata…reading…");
    EXPECT_FALSE(first.refreshEnabled);
    EXPECT_EQ(bench.renders(), 0U) << "it is being drawn";
    EXPECT_EQ(bench.globalQueue.waiting.front().first, platform::QueuePriority::userInitiated);
    bench.sessions->refresh();
    bench.sessions->openTerminal("h");
    bench.answer(terminals(1));
    bench.deliver();
    EXPECT_EQ(bench.renders(), 1U);
    EXPECT_EQ(bench.sessions->body().refresh, "refresh terminals");
    EXPECT_TRUE(bench.globalQueue.waiting.empty()) << "a second drawing starts nothing";
    ASSERT_EQ(bench.children.requests.size(), 1U) << "one call at a time";
    EXPECT_EQ(bench.children.requests[0].executable, "/usr/bin/python3");
    EXPECT_EQ(bench.children.requests[0].arguments, (Lines { "/opt/session_bridge.py", "list" }));
    EXPECT_EQ(bench.children.requests[0].timeout, platform::Seconds(20));
    EXPECT_FALSE(bench.children.requests[0].input);
    bench.panel.tab = OstrelMode::overview;
    bench.bundle.resources.clear();
    bench.read("", 1);
    EXPECT_EQ(bench.renders(), 0U) << "another tab isn't drawn anew";
    EXPECT_EQ(bench.children.requests.at(1).arguments, (Lines { "", "list" })) << "and without a script";
}

TEST(SessionPanel, OpensATerminalAndKeepsTheListWhateverIsSaid)
{
    const std::pair<const char*, const char*> cases[] {
        { R"({"ok":true,"message":"Brought to the front.","error":"no"})", "Brought to the front." },
        { R"({"ok":false,"error":"Selected a, but its window isn't in front."})",
            "Selected a, but its window isn't in front." },
        { R"({"message":7,"error":null})", "No confirmation received" },
        { "{}", "No confirmation received" },
        { "no JSON", unavailable },
    };
    Bench bench;
    bench.read(terminals(9));
    bench.sessions->nextPage();
    for (const auto& [output, said] : cases) {
        bench.renders();
        bench.children.requests.clear();
        bench.open(output);
        EXPECT_EQ(bench.status(), said);
        EXPECT_EQ(bench.titles(), Lines { "t108" }) << "the page too";
        EXPECT_EQ(bench.renders(), 2U) << "off, and on again";
        ASSERT_EQ(bench.children.requests.size(), 1U) << "the list isn't read again";
        EXPECT_EQ(bench.children.requests[0].arguments,
            (Lines { "/opt/session_bridge.py", "switch", "--handle", "a 'b' $(c)\n--d", "--confirm" }));
    }
}

TEST(SessionPanel, TurnsPagesOfEightWithoutTheScript)
{
    Bench bench;
    bench.read(terminals(8));
    EXPECT_FALSE(bench.sessions->body().pager);
    bench.read(terminals(9));
    EXPECT_EQ(bench.sessions->body().pager, (Pager { "1 / 2", false, true }));
    bench.sessions->previousPage();
    bench.sessions->nextPage();
    bench.sessions->nextPage();
    EXPECT_EQ(bench.sessions->body().pager, (Pager { "2 / 2", true, false }));
    EXPECT_EQ(bench.titles(), Lines { "t108" });
    bench.sessions->openTerminal("h");
    bench.sessions->previousPage();
    EXPECT_EQ(bench.sessions->body().pager, (Pager { "2 / 2", false, false })) << "off while busy";
    EXPECT_FALSE(bench.sessions->body().rows.at(0).enabled);
    bench.deliver();
    EXPECT_EQ(bench.children.requests.size(), 3U);
    bench.read(terminals(17));
    EXPECT_EQ(bench.sessions->body().pager, (Pager { "1 / 3", false, true })) << "a new list begins anew";
}

TEST(SessionPanel, ASelfTestShowsAFixtureAndStartsNothing)
{
    Bench bench;
    bench.sessions->setSelfTest(true);
    const SessionBody body = bench.sessions->body();
    EXPECT_EQ(body.status, "Synthetic terminal fixture · navigation disabled");
    const SessionRow row { "Example terminal", "codex · local · connected · /example/project", false,
        "term_fixture" };
    EXPECT_EQ(body.rows, std::vector { row });
    bench.sessions->openTerminal("term_fixture");
    bench.sessions->refresh();
    EXPECT_TRUE(bench.globalQueue.waiting.empty());
    EXPECT_FALSE(bench.sessions->state().busy);
}

TEST(SessionPanel, AnAnswerThatComesAfterItsEndIsLost)
{
    for (const bool ran : { false, true }) {
        Bench bench;
        bench.answer(terminals(1));
        bench.sessions->refresh();
        if (ran)
            bench.globalQueue.run();
        bench.sessions.reset();
        bench.renders();
        bench.deliver();
        EXPECT_EQ(bench.renders(), 0U);
        EXPECT_EQ(bench.children.requests.size(), ran ? 1U : 0U) << "what waited isn't started any more";
    }
}

} // namespace
