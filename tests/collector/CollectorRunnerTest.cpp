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
#include <future>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>

namespace {

using namespace ostrel;
using namespace std::string_literals;
using platform::Seconds;

RunRequest shell(std::string_view script, const std::vector<std::string>& arguments = {})
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

TEST(CollectorRunner, TheClockComesBeforeTheStatusAndTheStatusBeforeTheErrorText)
{
    const std::string filler(598, 'e');
    struct Case {
        int status;
        double elapsed;
        std::string errorOutput, error;
        double timeout = 8;
    };
    const Case cases[] { { 0, 0.1, "", "" }, { 0, 7.999'999, "a warning", "" },
        { 0, 8, "words", "Collector timed out after 8s" },
        { SIGKILL, 8.5, "words", "Collector timed out after 8s" },
        { SIGTERM, 0.5, "", "Collector timed out after 0s", 0.5 },
        { SIGTERM, 9, "", "Collector timed out after 8s", 8.9 },
        { 1, 0.1, "Traceback\nKeyError\n", "Traceback\nKeyError\n" }, { SIGTERM, 0.1, "why", "why" },
        { 3, 0.1, "", "" },
        // Cut at 600 bytes, and then no text when a letter is cut or the bytes aren't text.
        { 1, 0.1, filler + "xy", filler + "xy" }, { 1, 0.1, filler + "xyz", filler + "xy" },
        { 1, 0.1, filler + "éx", filler + "é" }, { 1, 0.1, filler + "xé", "Collector stopped" },
        { 1, 0.1, "a\xff", "Collector stopped" }, { 1, 0.1, "a\xc3", "Collector stopped" },
        { 1, 0.1, filler + "xy\xff", filler + "xy" }, { 1, 0.1, "a\0b"s, "a\0b"s } };
    for (const Case& c : cases) {
        FakeChildProcess children;
        CollectorRunner runner(children);
        children.outcomes.push_back({ {}, "data", c.errorOutput, c.status, Seconds(c.elapsed) });
        const CollectorResult result = runner.run({ .timeout = Seconds(c.timeout) });
        EXPECT_EQ(result.error, c.error) << c.errorOutput << " after " << c.elapsed;
        EXPECT_EQ(result.status, c.status) << c.error;
        EXPECT_EQ(result.data, "data") << c.error;
        EXPECT_EQ(result.elapsed, c.elapsed) << c.error;
    }
}

TEST(CollectorRunner, AChildThatCannotStartSaysSoInTheSameWordsWhateverItWasAndTheClock)
{
    platform::LinuxChildProcess children;
    CollectorRunner runner(children);
    for (const auto& [path, words] :
        { std::pair { "/nowhere/python3", "No such file or directory" }, { "/usr", "Permission denied" } }) {
        const CollectorResult result = runner.run({ .executable = path, .timeout = Seconds(0) });
        EXPECT_EQ(result.error, "Could not start Python 3: "s + words);
        EXPECT_EQ(result.status, -1);
        EXPECT_EQ(result.data, "");
        EXPECT_TRUE(runner.awaitIdle(Seconds(0))) << "it isn't listed";
    }
}

TEST(CollectorRunner, CancelAllStopsAllOfThisRunnerAndNoneOfAnother)
{
    platform::LinuxChildProcess children;
    CollectorRunner mine(children);
    CollectorRunner theirs(children);
    const TemporaryFolder folder;
    const auto start
        = [](CollectorRunner& runner, const char* script, const std::vector<std::string>& files) {
              return std::async(
                  std::launch::async, [&, script, files] { return runner.run(shell(script, files)); });
          };
    const std::string one = folder.path() + "/1";
    const std::string two = folder.path() + "/2";
    const std::string other = folder.path() + "/3";
    constexpr const char* forever = "echo $1; : > $1; exec sleep 600";
    auto first = start(mine, forever, { one });
    auto second = start(mine, forever, { two });
    auto third = start(theirs, ": > $1; while ! [ -e $2 ]; do sleep 0.01; done; echo whole",
        { other, folder.path() + "/go" });
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
    platform::LinuxChildProcess children;
    CollectorRunner runner(children);
    // In a thread, since the thread sanitizer starts one of its own with the program's first.
    std::thread([&runner] { static_cast<void>(runner.run({ .executable = "/bin/true" })); }).join();
    const auto descriptors = entriesIn("/proc/self/fd");
    const auto tasks = entriesIn("/proc/self/task");
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> threads;
        for (const char* worker : { "a", "b", "c", "d" })
            threads.emplace_back([&, worker] {
                for (int i = 0; i < 300; ++i) {
                    // Every tenth is fed, and gives back its own words and nobody else's.
                    const bool fed = i % 10 == 0;
                    const std::string words = fed ? worker + std::to_string(i) : "";
                    const CollectorResult result = runner.run({ .executable = fed ? "/bin/cat" : "/bin/true",
                        .input = words,
                        .timeout = generousLimit });
                    wrong += result.status != 0 || result.data != words;
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
