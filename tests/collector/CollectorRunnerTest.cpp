// SPDX-License-Identifier: Apache-2.0
#include "collector/CollectorRunner.h"

#include "platform/linux/LinuxChildProcess.h"
#include "support/FakeChildProcess.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace {

using namespace ostrel;
using namespace std::string_literals;
using platform::Seconds;

RunRequest shell(std::string_view script, std::vector<std::string> arguments = {})
{
    RunRequest request { .executable = "/bin/sh", .arguments = { "-c", std::string(script), "sh" } };
    request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
    request.timeout = generousLimit;
    return request;
}

/// The real children, with something that happens right before each start.
struct DelayedChildren final : platform::ChildProcess {
    [[nodiscard]] std::shared_ptr<platform::ChildStop> makeStop() override { return real.makeStop(); }
    [[nodiscard]] platform::ChildOutcome run(
        const platform::ChildRequest& request, const std::shared_ptr<platform::ChildStop>& stop) override
    {
        beforeStart();
        return real.run(request, stop);
    }
    [[nodiscard]] platform::Environment environment() const override { return real.environment(); }

    platform::LinuxChildProcess real;
    std::function<void()> beforeStart;
};

TEST(CollectorRunner, AsksForTheSystemsPythonEightSecondsAndNoInputUnlessToldOtherwise)
{
    FakeChildProcess children;
    children.surroundings = { { "HOME", "/home/a" }, { "PATH", "/home/a/bin" } };
    CollectorRunner runner(children);
    static_cast<void>(runner.run({ .arguments = { "/s.py", "json" } }));
    static_cast<void>(runner.run({ .executable = "/x", .input = "", .timeout = Seconds(330) }));
    ASSERT_EQ(children.requests.size(), 2U);
    const auto& usual = children.requests[0];
    EXPECT_EQ(usual.executable, "/usr/bin/python3");
    EXPECT_EQ(usual.arguments, (std::vector<std::string> { "/s.py", "json" }));
    EXPECT_EQ(usual.input, std::nullopt);
    EXPECT_EQ(usual.timeout, Seconds(8));
    EXPECT_EQ(usual.killDelay, Seconds(0.5));
    EXPECT_EQ(usual.environment,
        (platform::Environment { { "HOME", "/home/a" }, { "PATH", "/usr/bin:/bin:/usr/sbin:/sbin" } }));
    EXPECT_EQ(children.requests[1].executable, "/x");
    EXPECT_EQ(children.requests[1].input, "");
    EXPECT_EQ(children.requests[1].timeout, Seconds(330));
}

TEST(CollectorRunner, OnlyTheSearchPathOfTheEnvironmentIsChanged)
{
    platform::LinuxChildProcess children;
    CollectorRunner runner(children);
    const std::string before = std::getenv("PATH");
    ::setenv("PATH", "/nowhere", 1);
    ::setenv("OSTREL_TEST_INHERITED", "a b=c", 1);
    std::string expected;
    for (const auto& [name, value] : children.environment())
        expected += name + "=" + (name == "PATH" ? "/usr/bin:/bin:/usr/sbin:/sbin" : value) + "\n";
    EXPECT_EQ(runner.run({ .executable = "/usr/bin/env" }).data, expected);
    // Also where there was none to change.
    ::unsetenv("PATH");
    EXPECT_EQ(
        runner.run(shell("echo $PATH$OSTREL_TEST_INHERITED")).data, "/usr/bin:/bin:/usr/sbin:/sbina b=c\n");
    ::unsetenv("OSTREL_TEST_INHERITED");
    ::setenv("PATH", before.c_str(), 1);
}

TEST(CollectorRunner, TheClockComesBeforeTheStatusAndTheStatusBeforeTheErrorText)
{
    const std::string filler(598, 'e');
    struct Case {
        const char* what;
        int status;
        double elapsed;
        double timeout;
        std::string errorOutput;
        std::string error;
    };
    const Case cases[] {
        { "good", 0, 0.1, 8, "", "" },
        { "good with words", 0, 0.1, 8, "a warning", "" },
        { "good just before the deadline", 0, 7.999'999, 8, "", "" },
        { "good at the deadline", 0, 8, 8, "words", "Collector timed out after 8s" },
        { "killed behind the deadline", SIGKILL, 8.5, 8, "words", "Collector timed out after 8s" },
        { "half a second", SIGTERM, 0.5, 0.5, "", "Collector timed out after 0s" },
        { "cut toward zero", SIGTERM, 9, 8.9, "", "Collector timed out after 8s" },
        { "long", SIGTERM, 331, 330, "", "Collector timed out after 330s" },
        { "words", 1, 0.1, 8, "Traceback\nKeyError\n", "Traceback\nKeyError\n" },
        { "a signal with words", SIGTERM, 0.1, 8, "why", "why" },
        { "silent", 3, 0.1, 8, "", "" },
        { "600 bytes", 1, 0.1, 8, filler + "xy", filler + "xy" },
        { "601 bytes", 1, 0.1, 8, filler + "xyz", filler + "xy" },
        { "a letter up to the cut", 1, 0.1, 8, filler + "éx", filler + "é" },
        { "a letter across the cut", 1, 0.1, 8, filler + "xé", "Collector stopped" },
        { "binary", 1, 0.1, 8, "a\xff", "Collector stopped" },
        { "half a letter at the end", 1, 0.1, 8, "a\xc3", "Collector stopped" },
        { "binary behind the cut", 1, 0.1, 8, filler + "xy\xff", filler + "xy" },
        { "a zero byte is text", 1, 0.1, 8, "a\0b"s, "a\0b"s },
    };
    for (const Case& c : cases) {
        FakeChildProcess children;
        CollectorRunner runner(children);
        children.outcomes.push_back({ .output = "data",
            .errorOutput = c.errorOutput,
            .status = c.status,
            .elapsed = Seconds(c.elapsed) });
        const CollectorResult result = runner.run({ .timeout = Seconds(c.timeout) });
        EXPECT_EQ(result.error, c.error) << c.what;
        EXPECT_EQ(result.status, c.status) << c.what;
        EXPECT_EQ(result.data, "data") << c.what;
        EXPECT_EQ(result.elapsed, c.elapsed) << c.what;
    }
}

TEST(CollectorRunner, AChildThatCannotStartSaysSoInTheSameWordsWhateverItWas)
{
    platform::LinuxChildProcess children;
    CollectorRunner runner(children);
    const std::pair<RunRequest, std::string> cases[] {
        { { .executable = "/nowhere/python3" }, "Could not start Python 3: No such file or directory" },
        { { .executable = "/usr" }, "Could not start Python 3: Permission denied" },
        // The clock has no say here.
        { { .executable = "/nowhere/python3", .timeout = Seconds(0) },
            "Could not start Python 3: No such file or directory" },
    };
    for (const auto& [request, error] : cases) {
        const CollectorResult result = runner.run(request);
        EXPECT_EQ(result.error, error);
        EXPECT_EQ(result.status, -1);
        EXPECT_EQ(result.data, "");
        EXPECT_GE(result.elapsed, 0);
        EXPECT_TRUE(runner.awaitIdle(Seconds(0))) << "it isn't listed";
    }
}

TEST(CollectorRunner, RealChildrenGiveWhatTheyWroteAndHowTheyEnded)
{
    platform::LinuxChildProcess children;
    CollectorRunner runner(children);
    struct Case {
        const char* script;
        std::optional<std::string> input;
        std::string data;
        int status;
        std::string error;
    };
    const Case cases[] {
        { "cat; echo end", {}, "end\n", 0, "" },
        { "cat; echo end", "fed ", "fed end\n", 0, "" },
        { "echo out; echo warning >&2", {}, "out\n", 0, "" },
        { "echo out; echo broken >&2; exit 2", {}, "out\n", 2, "broken\n" },
        { "exit 9", {}, "", 9, "" },
        { "head -c 100000 /dev/zero | tr '\\0' e >&2; exit 1", {}, "", 1, std::string(600, 'e') },
        { "kill -KILL $$", {}, "", SIGKILL, "" },
    };
    for (const Case& c : cases) {
        RunRequest request = shell(c.script);
        request.input = c.input;
        const CollectorResult result = runner.run(request);
        EXPECT_EQ(result.data, c.data) << c.script;
        EXPECT_EQ(result.status, c.status) << c.script;
        EXPECT_EQ(result.error, c.error) << c.script;
        EXPECT_GT(result.elapsed, 0) << c.script;
    }
}

TEST(CollectorRunner, AChildBeyondItsDeadlineTimesOutAlsoWhenItRefusesToEnd)
{
    struct Case {
        const char* script;
        double timeout;
        int status;
        const char* error;
    };
    const Case cases[] {
        { "echo before; exec sleep 600", 0.5, SIGTERM, "Collector timed out after 0s" },
        { "trap '' TERM; echo before; while :; do sleep 0.05; done", 1, SIGKILL,
            "Collector timed out after 1s" },
    };
    platform::LinuxChildProcess children;
    CollectorRunner runner(children);
    for (const Case& c : cases) {
        RunRequest request = shell(c.script);
        request.timeout = Seconds(c.timeout);
        const CollectorResult result = runner.run(request);
        EXPECT_EQ(result.error, c.error);
        EXPECT_EQ(result.status, c.status) << c.script;
        EXPECT_EQ(result.data, "before\n") << c.script;
    }
}

TEST(CollectorRunner, CancelAllStopsAllOfThisRunnerAndNoneOfAnother)
{
    platform::LinuxChildProcess children;
    CollectorRunner mine(children);
    CollectorRunner theirs(children);
    const TemporaryFolder folder;
    const auto start = [](CollectorRunner& runner, const RunRequest& request) {
        return std::async(std::launch::async, [&runner, request] { return runner.run(request); });
    };
    const std::string one = folder.path() + "/1";
    const std::string two = folder.path() + "/2";
    const std::string other = folder.path() + "/3";
    const std::string go = folder.path() + "/go";
    constexpr const char* forever = "echo $1; : > $1; exec sleep 600";
    auto first = start(mine, shell(forever, { one }));
    auto second = start(mine, shell(forever, { two }));
    auto third
        = start(theirs, shell(": > $1; while ! [ -e $2 ]; do sleep 0.01; done; echo whole", { other, go }));
    for (const std::string& ready : { one, two, other })
        ASSERT_TRUE(appears(ready));
    EXPECT_FALSE(mine.awaitIdle(Seconds(0)));

    mine.cancelAll();
    for (const auto& [result, data] : { std::pair { first.get(), one }, { second.get(), two } }) {
        EXPECT_EQ(result.status, SIGTERM);
        EXPECT_EQ(result.error, "");
        EXPECT_EQ(result.data, data + "\n");
    }
    EXPECT_TRUE(mine.awaitIdle(Seconds(0)));
    EXPECT_FALSE(theirs.awaitIdle(Seconds(0)));

    folder.write("go", "");
    EXPECT_TRUE(theirs.awaitIdle(generousLimit));
    const CollectorResult result = third.get();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.data, "whole\n");
}

TEST(CollectorRunner, ACancelReachesAChildThatIsAboutToStartAndNoLaterOne)
{
    DelayedChildren children;
    CollectorRunner runner(children);
    runner.cancelAll(); // nothing runs
    children.beforeStart = [&runner] { runner.cancelAll(); };
    EXPECT_EQ(runner.run(shell("exec sleep 600")).status, SIGTERM);
    children.beforeStart = [] {};
    EXPECT_EQ(runner.run(shell("exit 0")).status, 0);
}

TEST(CollectorRunner, OverAThousandRunsFromSeveralThreadsLeaveNothingBehind)
{
    constexpr int workers = 4;
    constexpr int runs = 300;
    platform::LinuxChildProcess children;
    CollectorRunner runner(children);
    static_cast<void>(runner.run({ .executable = "/bin/true" }));
    const auto descriptors = entriesIn("/proc/self/fd");
    const auto tasks = entriesIn("/proc/self/task");
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> threads;
        for (int worker = 0; worker < workers; ++worker)
            threads.emplace_back([&, worker] {
                for (int i = 0; i < runs; ++i) {
                    RunRequest request { .executable = "/bin/true", .timeout = generousLimit };
                    std::string expected;
                    // Every tenth is fed, and gives back its own words and nobody else's.
                    if (i % 10 == 0) {
                        request.executable = "/bin/cat";
                        request.input = expected = std::to_string(worker) + " " + std::to_string(i);
                    }
                    const CollectorResult result = runner.run(std::move(request));
                    if (result.status != 0 || result.data != expected)
                        ++wrong;
                }
            });
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(entriesIn("/proc/self/fd"), descriptors);
    EXPECT_TRUE(eventually([&] { return entriesIn("/proc/self/task") == tasks; }));
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_TRUE(runner.awaitIdle(Seconds(0)));
}

TEST(CollectorRunner, ACancelAtAnyMomentEndsARunOrComesTooLate)
{
    platform::LinuxChildProcess children;
    CollectorRunner runner(children);
    std::atomic<bool> over = false;
    int stopped = 0;
    int other = 0;
    {
        const std::jthread canceller([&] {
            while (!over)
                runner.cancelAll();
        });
        for (int i = 0; i < 100; ++i) {
            const int status = runner.run(shell(i % 2 == 0 ? "exit 0" : "exec sleep 600")).status;
            ++(status == SIGTERM ? stopped : other);
            EXPECT_TRUE(status == SIGTERM || (status == 0 && i % 2 == 0)) << status;
        }
        over = true;
    }
    EXPECT_GE(stopped, 50);
}

} // namespace
