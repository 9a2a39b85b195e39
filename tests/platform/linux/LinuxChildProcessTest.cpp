// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxChildProcess.h"

#include "support/ForkedProcess.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <future>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace platform;
using namespace std::string_literals;

constexpr std::size_t megabyte = 1'000'000;

/// A shell script with the system's tools; its arguments are $1 and so on.
ChildRequest shell(std::string_view script, std::vector<std::string> arguments = {})
{
    ChildRequest request { .executable = "/bin/sh", .environment = { { "PATH", "/usr/bin:/bin" } } };
    request.arguments = { "-c", std::string(script), "sh" };
    request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
    request.timeout = generousLimit;
    return request;
}

ChildOutcome run(const ChildRequest& request)
{
    LinuxChildProcess children;
    return children.run(request, children.makeStop());
}

/// Bytes of every value, unlike at any two near places.
std::string noise(std::size_t size)
{
    std::string bytes(size, '\0');
    std::uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1'664'525 + 1'013'904'223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

int numberIn(const std::string& path)
{
    int number = 0;
    std::ifstream(path) >> number;
    return number;
}

bool nothingToReap() { return ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD; }

TEST(LinuxChildProcess, AChildGetsItsArgumentsAndTheGivenEnvironmentUnchanged)
{
    const std::vector<std::string> arguments { "", "a b", "\"'$(x)`\\*", "line\nline", "\xff", "-n" };
    std::string expected;
    for (const std::string& argument : arguments)
        expected += "[" + argument + "]";
    EXPECT_EQ(run(shell("printf '[%s]' \"$@\"", arguments)).output, expected);

    ChildRequest request { .executable = "/usr/bin/env" };
    request.environment = { { "EMPTY", "" }, { "A", "x=y z" } };
    EXPECT_EQ(run(request).output, "A=x=y z\nEMPTY=\n");
    ::setenv("OSTREL_TEST_OWN", "x=y\nz", 1);
    EXPECT_EQ(LinuxChildProcess().environment().at("OSTREL_TEST_OWN"), "x=y\nz");
    ::unsetenv("OSTREL_TEST_OWN");
}

TEST(LinuxChildProcess, WhatIsFedArrivesWholeAndThenTheInputEnds)
{
    for (const std::optional<std::string>& input :
        { std::optional<std::string>(), { ""s }, { "x"s }, { noise(65'536) }, { noise(5 * megabyte) } }) {
        ChildRequest request = shell("cat");
        request.input = input;
        const ChildOutcome outcome = run(request);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_TRUE(outcome.output == input.value_or("")) << outcome.output.size() << " bytes came back";
    }
}

TEST(LinuxChildProcess, BothOutputStreamsAreServedAtOnceAndKeptApart)
{
    constexpr const char* out = "head -c 1000000 /dev/zero";
    constexpr const char* err = "head -c 1000000 /dev/zero | tr '\\0' e >&2";
    const std::string cases[] { out + "; "s + err, err + "; "s + out, out + " & "s + err + "; wait" };
    for (const std::string& script : cases) {
        const ChildOutcome outcome = run(shell(script));
        EXPECT_EQ(outcome.output, std::string(megabyte, '\0')) << script;
        EXPECT_EQ(outcome.errorOutput, std::string(megabyte, 'e')) << script;
        EXPECT_EQ(outcome.status, 0);
    }
    // All three streams at once: neither side waits for the other.
    ChildRequest request = shell("tee /dev/stderr");
    request.input = noise(megabyte);
    const ChildOutcome outcome = run(request);
    EXPECT_TRUE(outcome.output == *request.input && outcome.errorOutput == *request.input);
}

TEST(LinuxChildProcess, AChildThatDoesNotReadItsInputHoldsNobodyAndNoSignalComes)
{
    const std::pair<const char*, const char*> cases[] { { "exit 3", "" },
        { "exec <&-; printf out; exit 3", "out" }, { "head -c 3; exit 3", "abc" } };
    for (const auto& [script, output] : cases) {
        ChildRequest request = shell(script);
        request.input = "abc" + std::string(5 * megabyte, 'x');
        // With the default action a signal for the broken pipe would end this process.
        ASSERT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL);
        const ChildOutcome outcome = run(request);
        EXPECT_EQ(outcome.status, 3) << script;
        EXPECT_EQ(outcome.output, output) << script;
        sigset_t pending;
        sigpending(&pending);
        EXPECT_EQ(sigismember(&pending, SIGPIPE), 0) << script;
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        EXPECT_EQ(sigismember(&mask, SIGPIPE), 0) << script;
    }
}

TEST(LinuxChildProcess, TheStatusIsTheExitStatusOrTheSignal)
{
    const std::pair<const char*, int> cases[] { { "exit 0", 0 }, { "exit 1", 1 }, { "exit 255", 255 },
        { "kill -TERM $$", SIGTERM }, { "kill -KILL $$", SIGKILL },
        { "ulimit -c 0; kill -SEGV $$", SIGSEGV } };
    for (const auto& [script, status] : cases) {
        const ChildOutcome outcome = run(shell(script));
        EXPECT_EQ(outcome.status, status) << script;
        EXPECT_EQ(outcome.launchError, "");
    }
}

TEST(LinuxChildProcess, AFailedLaunchTellsTheSystemsWordsAndLeavesNothing)
{
    const TemporaryFolder folder;
    folder.write("plain", "exit 0\n");
    folder.write("notaprogram", "exit 0\n");
    ::chmod((folder.path() + "/notaprogram").c_str(), 0700);
    struct Case {
        std::string executable;
        std::string argument;
        const char* message;
    };
    const Case cases[] {
        { folder.path() + "/absent", "", "No such file or directory" },
        { "", "", "No such file or directory" },
        { "sh", "", "No such file or directory" }, // no search path
        { folder.path() + "/plain/x", "", "Not a directory" },
        { folder.path(), "", "Permission denied" },
        { folder.path() + "/plain", "", "Permission denied" },
        { folder.path() + "/notaprogram", "", "Exec format error" },
        { "/bin/true", std::string(megabyte, 'x'), "Argument list too long" },
    };
    const auto before = entriesIn("/proc/self/fd");
    for (const Case& c : cases) {
        ChildRequest request { .executable = c.executable, .arguments = { c.argument } };
        request.input = "never read";
        const ChildOutcome outcome = run(request);
        EXPECT_EQ(outcome.launchError, c.message) << c.executable;
        EXPECT_EQ(outcome.status, -1) << c.executable;
        EXPECT_EQ(outcome.output + outcome.errorOutput, "") << c.executable;
        EXPECT_TRUE(nothingToReap()) << c.executable;
    }
    EXPECT_EQ(entriesIn("/proc/self/fd"), before);
}

TEST(LinuxChildProcess, TheDeadlineEndsAChildAndKeepsWhatItWrote)
{
    ChildRequest request = shell("printf before; printf why >&2; exec sleep 600");
    request.timeout = Seconds(1);
    const ChildOutcome outcome = run(request);
    EXPECT_EQ(outcome.status, SIGTERM);
    EXPECT_EQ(outcome.output, "before");
    EXPECT_EQ(outcome.errorOutput, "why");
    EXPECT_GE(outcome.elapsed, request.timeout);
    // A deadline that has passed before the child could start stops it all the same.
    for (const double timeout : { 0.0, -5.0 }) {
        request.timeout = Seconds(timeout);
        EXPECT_EQ(run(request).status, SIGTERM) << timeout;
    }
}

TEST(LinuxChildProcess, AStopAsksAndThenKillsTheWholeGroup)
{
    struct Case {
        const char* script; ///< writes the number of a process that must end to "$1" when it is ready
        int status;
        const char* output;
    };
    // The number is moved into place, so that no half of it is read.
    const Case cases[] {
        { "echo $$ > $1.x; mv $1.x $1; exec sleep 600", SIGTERM, "" },
        { "trap 'printf bye; exit 7' TERM; echo $$ > $1.x; mv $1.x $1; while :; do sleep 0.01; done", 7,
            "bye" },
        { "trap '' TERM; echo $$ > $1.x; mv $1.x $1; while :; do sleep 0.01; done", SIGKILL, "" },
        // A grandchild that refuses, below a child that obeys at once.
        { "(trap '' TERM; exec sleep 600) & (trap '' TERM; sh -c 'echo $PPID > $0.x; mv $0.x $0' $1; "
          "while :; do sleep 0.01; done) & wait",
            SIGTERM, "" },
        // A child that has left its group.
        { "exec python3 -c 'import os,sys,time\n"
          "os.setpgid(0, os.getpgid(os.getppid()))\n"
          "open(sys.argv[1] + \".x\", \"w\").write(str(os.getpid()))\n"
          "os.rename(sys.argv[1] + \".x\", sys.argv[1])\n"
          "time.sleep(600)' $1",
            SIGTERM, "" },
    };
    for (const Case& c : cases) {
        const TemporaryFolder folder;
        const std::string ready = folder.path() + "/ready";
        LinuxChildProcess children;
        const auto stop = children.makeStop();
        ChildRequest request = shell(c.script, { ready });
        request.killDelay = Seconds(0.1);
        auto outcome = std::async(std::launch::async, [&] { return children.run(request, stop); });
        ASSERT_TRUE(appears(ready)) << c.script;
        stop->stop();
        stop->stop();
        const ChildOutcome ended = outcome.get();
        EXPECT_EQ(ended.status, c.status) << c.script;
        EXPECT_EQ(ended.output, c.output) << c.script;
        const int pid = numberIn(ready);
        ASSERT_GT(pid, 1) << c.script;
        EXPECT_TRUE(eventually([pid] { return !isRunning(pid); })) << c.script;
        // Its number may be somebody else's by now.
        stop->stop();
    }
}

TEST(LinuxChildProcess, AStopThatComesFirstEndsTheChildRightAfterItsStart)
{
    LinuxChildProcess children;
    const auto stop = children.makeStop();
    stop->stop();
    EXPECT_EQ(children.run(shell("exec sleep 600"), stop).status, SIGTERM);
}

TEST(LinuxChildProcess, AGrandchildThatKeepsThePipesOpenDoesNotHoldTheRun)
{
    const ChildOutcome silent = run(shell("sleep 600 & echo $!"));
    EXPECT_EQ(silent.status, 0);
    const int pid = std::stoi(silent.output);
    EXPECT_TRUE(isRunning(pid)) << "one that was not stopped lets what it started live on";
    ::kill(pid, SIGKILL);

    // One that writes for ever ends by itself, at our closing of the pipe.
    const ChildOutcome loud = run(shell("yes & echo $! >&2; exit 4"));
    EXPECT_EQ(loud.status, 4);
    const int writer = std::stoi(loud.errorOutput);
    EXPECT_TRUE(eventually([writer] { return !isRunning(writer); }));
}

TEST(LinuxChildProcess, WhatComesBehindTheLimitIsReadAndDropped)
{
    const auto outcome = run(shell("head -c 70000000 /dev/zero; exit 5"));
    EXPECT_EQ(outcome.output.size(), LinuxChildProcess::longestOutput);
    EXPECT_EQ(outcome.status, 5);
}

TEST(LinuxChildProcess, NoDescriptorSignalMaskOrIgnoredSignalOfOursReachesAChild)
{
    const int low = ::open("/dev/null", O_RDONLY);
    const int high = ::fcntl(low, F_DUPFD, 200);
    ASSERT_GE(high, 200);
    sigset_t term;
    sigset_t before;
    sigemptyset(&term);
    sigaddset(&term, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &term, &before);
    const auto hangup = std::signal(SIGHUP, SIG_IGN);
    // The folder's own descriptor is closed again when the list is walked. The C library keeps signals 32 and
    // 33 for itself.
    ChildRequest request = shell("for f in /proc/$$/fd/*; do [ -e $f ] && printf '%s ' ${f##*/}; done; "
                                 "grep -cE '^Sig(Blk|Ign):\\s*0*(180000000)?$' /proc/self/status");
    for (const std::optional<std::string>& input : { std::optional<std::string>(), { "x"s } }) {
        request.input = input;
        EXPECT_EQ(run(request).output, "0 1 2 2\n");
    }
    std::signal(SIGHUP, hangup);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ::close(low);
    ::close(high);
}

TEST(LinuxChildProcess, StreamsStayApartWhenOurOwnStandardStreamsAreClosed)
{
    const TemporaryFolder folder;
    ForkedProcess process([&folder] {
        for (const int stream : { 0, 1, 2 })
            ::close(stream);
        ChildRequest request = shell("cat; printf err >&2");
        request.input = "in";
        const ChildOutcome outcome = run(request);
        EXPECT_EQ(outcome.output + "|" + outcome.errorOutput, "in|err");
        folder.write("seen", outcome.output + "|" + outcome.errorOutput);
    });
    EXPECT_EQ(process.wait(), 0);
    EXPECT_EQ(std::filesystem::file_size(folder.path() + "/seen"), 6U);
}

TEST(LinuxChildProcess, WithTooFewDescriptorsALaunchFailsOrTheRunIsWhole)
{
    ForkedProcess process([] {
        int failed = 0;
        int whole = 0;
        const auto taken = static_cast<rlim_t>(::dup(0)); // the lowest free number
        ::close(static_cast<int>(taken));
        // The last ones leave none for the descriptor of the child, or for that of the stop.
        for (rlim_t more = 0; more < 12; ++more) {
            rlimit limit {};
            ::getrlimit(RLIMIT_NOFILE, &limit);
            limit.rlim_cur = taken + more;
            ::setrlimit(RLIMIT_NOFILE, &limit);
            ChildRequest request = shell("cat; exit 6");
            request.input = "in";
            const ChildOutcome outcome = run(request);
            (outcome.status == -1 ? failed : whole) += 1;
            if (outcome.status == -1)
                EXPECT_EQ(outcome.launchError, "Too many open files");
            else
                EXPECT_EQ(outcome.output + std::to_string(outcome.status), "in6");
        }
        EXPECT_GT(failed, 5);
        EXPECT_GT(whole, 2);
        EXPECT_TRUE(nothingToReap());
    });
    EXPECT_EQ(process.wait(), 0);
}

} // namespace
