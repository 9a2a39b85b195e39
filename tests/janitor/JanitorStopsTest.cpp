// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorTab.h"

#include "janitor/JanitorBench.h"

#include <cerrno>
#include <functional>
#include <numeric>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Lines = JanitorBench::Lines;
using Pids = std::vector<std::int64_t>;

constexpr const char* sigterm
    = "\nSIGTERM is sent to each; a receipt with pid, name, memory and time is written";

/// Running servers, each started at its pid plus 1000.
struct Bench : JanitorBench {
    Bench()
    {
        for (int pid = 70; pid < 90; ++pid)
            processSignals.running[pid] = pid + 1000;
    }

    static std::string server(int pid, const std::string& reason = "orphan")
    {
        return processJson(pid, "srv", 10, "node srv" + std::to_string(pid), pid + 1000, reason);
    }
    static Lines servers(int count)
    {
        Lines all;
        for (int pid = 70; pid < 70 + count; ++pid)
            all.push_back(server(pid));
        return all;
    }
    static std::string listed(int count, const std::string& end = "")
    {
        std::string lines;
        for (int pid = 70; pid < 70 + count; ++pid)
            lines += "pid " + std::to_string(pid) + " · srv · 10 mb" + end + "\n";
        return lines;
    }
    static JanitorFinding finding(const Pids& pids)
    {
        JanitorFinding finding;
        finding.title = "orphans";
        finding.action = { JanitorAction::Kind::kill, "", "", pids };
        return finding;
    }
};

const std::string refusedTwo = killJson({},
    { processJson(1, "claude", 5, "claude", 1, "an agent"), processJson(2, "orca", 5, "orca", 1, "listed") });

TEST(JanitorStops, TheQuestionNamesEachProcessAndWhatIsLeftAlone)
{
    const Lines refused { processJson(3, "claude", 900, "claude", 4, "an agent"),
        processJson(4, "x\ny", 1, "x", 4, "listed") };
    const std::string untouched = "\nprotected and untouched: claude, x y\n";
    const std::string comeBack
        = "\nthe agent sessions keep running; their MCP tools come back when a session restarts";
    const auto mcp
        = [](const char* depth) { return [depth](Bench& bench) { bench.tab.pressProcesses(depth); }; };
    const auto finding = [](std::size_t count) {
        Pids pids(count);
        std::iota(pids.begin(), pids.end(), 70);
        return [pids](Bench& bench) { bench.tab.pressFinding(Bench::finding(pids)); };
    };
    struct Case {
        std::function<void(Bench&)> press;
        std::string reply, title, text, cancelled;
    };
    const Case cases[] {
        { mcp("light"), killJson(Bench::servers(8)), "stop 8 mcp processes · 80 mb",
            "mcp · light\n\n" + Bench::listed(8, " · orphan") + sigterm,
            "cancelled · 8 mcp processes left running" },
        { mcp("deep"), killJson(Bench::servers(9), refused), "stop 9 mcp processes · 90 mb",
            "mcp · deep\n\n" + Bench::listed(8, " · orphan") + "and 1 more, the largest first\n" + untouched
                + sigterm + comeBack,
            "cancelled · 9 mcp processes left running" },
        { finding(8), killJson(Bench::servers(8), refused), "stop 8 processes · 80 mb",
            "orphans\n\n" + Bench::listed(8) + untouched + sigterm, "cancelled · 8 processes left running" },
        { finding(11), killJson(Bench::servers(11)), "stop 11 processes · 110 mb",
            "orphans\n\n" + Bench::listed(8) + "and 3 more\n" + sigterm,
            "cancelled · 11 processes left running" },
    };
    for (const Case& c : cases) {
        Bench bench;
        bench.press([&] { c.press(bench); }, { c.reply });
        EXPECT_EQ(bench.question(), c.title + "\n" + c.text + "\nstop [cancel] !");
        EXPECT_EQ(bench.lastAction(), c.cancelled);
        EXPECT_TRUE(bench.processSignals.terminated.empty() && bench.receipts().empty());
        EXPECT_EQ(bench.runs().size(), 1U) << "cancelling looks at nothing more";
        bench.press([&] { c.press(bench); }, { c.reply });
        EXPECT_EQ(bench.alerts.asked.size(), 2U) << "the flow has ended and begins again";
    }
}

TEST(JanitorStops, WhereNothingMayBeStoppedNothingIsAsked)
{
    struct Case {
        std::string reply, mcp, finding;
    };
    const Case cases[] {
        { refusedTwo, "nothing to stop: all 2 processes are protected",
            "nothing to stop: all 2 processes are protected" },
        { killJson({}), "nothing to stop at this depth", "nothing to stop: all 0 processes are protected" },
        { "", "nothing to stop at this depth", "nothing to stop: all 0 processes are protected" },
    };
    for (const Case& c : cases) {
        Bench bench;
        bench.pressProcesses("deep", { c.reply }, 0);
        EXPECT_EQ(bench.status(), "mcp · deep: 0 processes · 0 mb · listed " + bench.clock());
        EXPECT_EQ(bench.lastAction(), c.mcp);
        for (int times = 0; times < 2; ++times)
            bench.press([&] { bench.tab.pressFinding(Bench::finding({})); }, { c.reply }, 0);
        EXPECT_EQ(bench.lastAction(), c.finding);
        EXPECT_TRUE(bench.alerts.asked.empty());
        EXPECT_EQ(bench.runs(),
            (Lines { "mcp-preview --depth=deep", "kill-preview --pids=", "kill-preview --pids=" }))
            << "each flow has ended and begins again";
    }
}

TEST(JanitorStops, OfMcpServersOnlyThoseGoThatAreStillWhatWasListed)
{
    struct Case {
        const char* what;
        Lines second;
        Pids stopped;
        const char* outcome;
    };
    constexpr const char* oneOfTwo
        = "✓ 1 of 2 mcp processes stopped · 10 mb · 1 gone or changed, left alone · receipts written";
    const auto reused = processJson(71, "srv", 10, "node srv71", 1, "");
    const auto other = processJson(71, "srv", 10, "node srv71 ", 1071, "");
    const auto agent = processJson(71, "claude", 10, "node srv71", 1071, "");
    const auto bigger = processJson(70, "srv", 300, "node srv70", 1070, "");
    const Case cases[] {
        { "all", Bench::servers(2), { 70, 71 }, "✓ 2 of 2 mcp processes stopped · 20 mb · receipts written" },
        { "one has ended", Bench::servers(1), { 70 }, oneOfTwo },
        { "another command", { bigger, other }, { 70 },
            "✓ 1 of 2 mcp processes stopped · 300 mb · 1 gone or changed, left alone · receipts written" },
        { "another process", { Bench::server(70), reused }, { 70 }, oneOfTwo },
        { "protected by now", { Bench::server(70), agent }, { 70 }, oneOfTwo },
        { "never listed", { Bench::server(75), Bench::server(70) }, { 70 }, oneOfTwo },
        { "named twice", { Bench::server(70), Bench::server(70) }, { 70 }, oneOfTwo },
        { "no answer", {}, {},
            "✓ 0 of 2 mcp processes stopped · 0 mb · 2 gone or changed, left alone · receipts written" },
    };
    for (const Case& c : cases) {
        Bench bench;
        bench.pressProcesses(
            "light", { killJson(Bench::servers(2)), c.second.empty() ? "" : killJson(c.second) }, 0);
        EXPECT_EQ(bench.processSignals.terminated, c.stopped) << c.what;
        EXPECT_EQ(bench.receipts().size(), c.stopped.size()) << c.what;
        EXPECT_EQ(bench.lastAction(), c.outcome) << c.what;
        EXPECT_FALSE(bench.tab.state().processPreviews.contains("light"));
        EXPECT_EQ(bench.runs(),
            (Lines { "mcp-preview --depth=light", "kill-preview --pids=70,71", "receipts", "findings" }));
    }
}

TEST(JanitorStops, TheSecondLookAtMcpServersComesAfterTheAnswer)
{
    Bench bench;
    bench.answer(killJson(Bench::servers(1)));
    bench.answer(killJson(Bench::servers(1)));
    bench.alerts.answers = { 0 };
    bench.alerts.meanwhile = [&] {
        EXPECT_EQ(bench.runs(), Lines { "mcp-preview --depth=light" });
        bench.tab.pressProcesses("light");
        EXPECT_TRUE(bench.globalQueue.waiting.empty()) << "no second time while the question stands";
    };
    bench.tab.pressProcesses("light");
    EXPECT_EQ(bench.status(), "reading ps for mcp · light; nothing is stopped yet");
    bench.globalQueue.run();
    bench.time.runPosted();
    EXPECT_EQ(bench.lastAction(), "stopping 1 mcp processes…");
    EXPECT_TRUE(bench.processSignals.terminated.empty());
    bench.deliver();
    EXPECT_EQ(bench.processSignals.terminated, Pids { 70 });
}

TEST(JanitorStops, AFindingStopsThoseThatAreHeldSinceTheListAndNoOthers)
{
    struct Case {
        const char* what;
        std::function<void(Bench&)> meanwhile;
        Pids stopped;
        std::size_t receipts;
        const char* outcome;
    };
    const Case cases[] {
        { "all", [](Bench&) {}, { 70, 71 }, 2, "✓ 2 of 2 processes stopped · 20 mb · receipts written" },
        { "number used again", [](Bench& bench) { bench.processSignals.running[71] = 7; }, { 70 }, 2,
            "✓ 1 of 2 processes stopped · 20 mb · receipts written" },
        { "refused by the system", [](Bench& bench) { bench.processSignals.errors[70] = EPERM; }, { 71 }, 2,
            "✓ 1 of 2 processes stopped · 20 mb · receipts written" },
        { "protected meanwhile", [](Bench& bench) { (void)bench.tab.protectName("srv70"); }, { 71 }, 1,
            "✓ 1 of 2 processes stopped · 20 mb · receipts written" },
    };
    for (const Case& c : cases) {
        Bench bench;
        bench.alerts.meanwhile = [&] {
            EXPECT_EQ(bench.processSignals.held, (Pids { 70, 71 })) << "before the question";
            EXPECT_EQ(bench.lastAction(), "checking 2 processes against the protection list…");
            bench.tab.pressFinding(Bench::finding({ 70 }));
            EXPECT_TRUE(bench.globalQueue.waiting.empty()) << "no second time while the question stands";
            c.meanwhile(bench);
        };
        // Whatever a script answers: 75 was never asked for.
        const JanitorFinding finding = Bench::finding({ 70, 71 });
        bench.press([&] { bench.tab.pressFinding(finding); },
            { killJson({ Bench::server(70), Bench::server(75), Bench::server(71) }) }, 0);
        EXPECT_TRUE(bench.question().starts_with("stop 2 processes · 20 mb\n"));
        EXPECT_EQ(bench.processSignals.terminated, c.stopped) << c.what;
        EXPECT_EQ(bench.receipts().size(), c.receipts) << c.what;
        EXPECT_EQ(bench.lastAction(), c.outcome) << c.what;
        EXPECT_EQ(bench.runs().at(0), "kill-preview --pids=70,71") << "and no second look";
    }
}

TEST(JanitorStops, OneProcessIsCheckedAskedAboutAndToldOf)
{
    const std::string longCommand(1000, 'x');
    struct Case {
        std::string reply;
        std::size_t answer;
        const char* text; ///< of the question; empty: none
        const char* told;
        Pids stopped;
    };
    const std::string memory
        = "\n\nmemory 10 mb\nSIGTERM is sent; a receipt with pid, name, memory and time is written";
    const std::string whole = "node srv70" + memory;
    const std::string cut = longCommand.substr(0, 300) + memory;
    const Case cases[] {
        { killJson({ Bench::server(70) }), 0, whole.c_str(), "stopped srv pid 70 · 10 mb · receipt written",
            { 70 } },
        { killJson({ Bench::server(70) }), 1, whole.c_str(), "cancelled · srv pid 70 left running", {} },
        { killJson({ processJson(70, "srv", 10, longCommand, 1, "") }), 0, cut.c_str(),
            "could not stop srv pid 70 · errno 3", {} },
        { killJson({ processJson(70, "codex", 10, "node srv70", 1070, "") }), 0, whole.c_str(),
            "protected · codex was not stopped", {} },
        { killJson({ Bench::server(75) }), 0, "", "srv is protected · not in the snapshot", {} },
        { killJson({}, { Bench::server(70, "another user's") }), 0, "", "srv is protected · another user's",
            {} },
        { "", 0, "", "srv is protected · not in the snapshot", {} },
    };
    for (const Case& c : cases) {
        Bench bench;
        Lines told;
        const auto ask = [&] {
            bench.tab.confirmStop(70, "srv", [&](const std::string& line) { told.push_back(line); });
        };
        bench.press([&] { ask(), ask(); }, { c.reply }, c.answer);
        EXPECT_EQ(told, Lines { c.told }) << "once, for the second press was dropped";
        EXPECT_EQ(bench.alerts.asked.size(), *c.text ? 1U : 0U) << c.told;
        if (*c.text) {
            EXPECT_EQ(bench.question(), std::string("stop srv · pid 70\n") + c.text + "\nstop [cancel] !");
        }
        EXPECT_EQ(bench.processSignals.terminated, c.stopped) << c.told;
        EXPECT_EQ(bench.runs().size(), *c.text && c.answer == 0 ? 2U : 1U) << "receipts after a stop alone";
    }
}

TEST(JanitorTab, AFindingOpensTheTabThatItNames)
{
    JanitorBench bench;
    JanitorFinding finding;
    bench.tab.pressFinding(finding);
    finding.action = { JanitorAction::Kind::openTab, "system" };
    bench.tab.pressFinding(finding);
    finding.action = { JanitorAction::Kind::clean, "", "agents-deep" };
    bench.tab.pressFinding(finding);
    EXPECT_EQ(bench.opened, (Lines { "system", "cleanup" }));
    bench.deliver();
    EXPECT_TRUE(bench.runs().empty()) << "nothing else happens";
}

} // namespace
