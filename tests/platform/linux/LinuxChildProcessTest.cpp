// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxChildProcess.h"

#include "support/ForkedProcess.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

#include <cerrno>
#include <csignal>
#include <fstream>
#include <future>
#include <random>

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
ChildRequest shell(std::string_view script, std::optional<std::string> input = {},
    const std::vector<std::string>& arguments = {})
{
    ChildRequest request { .executable = "/bin/sh", .environment = { { "PATH", "/usr/bin:/bin" } } };
    request.arguments = { "-c", std::string(script), "sh" };
    request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
    request.input = std::move(input);
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
    std::minstd_rand next;
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(next() >> 8);
    return bytes;
}

bool nothingToReap() { return ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD; }

TEST(LinuxChildProcess, AChildGetsItsArgumentsAndTheGivenEnvironmentUnchanged)
{
    const std::vector<std::string> arguments { "", "a b", "\"'$(x)`\\*", "line\nline", "\xff", "-n" };
    EXPECT_EQ(run(shell("printf '[%s]' \"$@\"", {}, arguments)).output,
        "[][a b][\"'$(x)`\\*][line\nline][\xff][-n]");

    ChildRequest request { .executable = "/usr/bin/env" };
    request.environment = { { "EMPTY", "" }, { "A", "x=y z" } };
    EXPECT_EQ(run(request).output, "A=x=y z\nEMPTY=\n");
    ::setenv("OSTREL_TEST_OWN", "x=y\nz", 1);
    EXPECT_EQ(LinuxChildProcess().environment().at("OSTREL_TEST_OWN"), "x=y\nz");
    ::unsetenv("OSTREL_TEST_OWN");
}

TEST(LinuxChildProcess, AllThreeStreamsAreServedAtOnceAndAChildThatDoesNotReadHoldsNobodyNorSignals)
{
    const std::string zeros(megabyte, '\0');
    const std::string letters(megabyte, 'e');
    const std::string large = noise(5 * megabyte);
    const std::string out = "head -c 1000000 /dev/zero; ";
    const std::string err = "head -c 1000000 /dev/zero | tr '\\0' e >&2; ";
    struct Case {
        std::string script;
        std::optional<std::string> input;
        std::string output, errorOutput;
        int status = 0;
    };
    const Case cases[] { { "cat", {}, "", "" }, { "cat", "", "", "" }, { "cat", large, large, "" },
        { out + err, {}, zeros, letters }, { err + out, {}, zeros, letters },
        { "tee /dev/stderr", large, large, large }, { "exit 255", large, "", "", 255 },
        { "exec <&-; printf out; exit 3", large, "out", "", 3 },
        { "head -c 3; exit 3", large, large.substr(0, 3), "", 3 }, { "kill -TERM $$", {}, "", "", SIGTERM },
        { "ulimit -c 0; kill -SEGV $$", {}, "", "", SIGSEGV } };
    for (const Case& c : cases) {
        // With the default action a signal for the broken pipe would end this process.
        ASSERT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL);
        const ChildOutcome outcome = run(shell(c.script, c.input));
        EXPECT_TRUE(outcome.output == c.output) << c.script << ": " << outcome.output.size();
        EXPECT_TRUE(outcome.errorOutput == c.errorOutput) << c.script << ": " << outcome.errorOutput.size();
        EXPECT_EQ(outcome.status, c.status) << c.script;
        sigset_t pending;
        sigset_t mask;
        sigpending(&pending);
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        EXPECT_EQ(sigismember(&pending, SIGPIPE) + sigismember(&mask, SIGPIPE), 0) << c.script;
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
        const char* message;
        std::size_t argument = 0; ///< bytes
    };
    const Case cases[] { { folder.path() + "/absent", "No such file or directory" },
        { "", "No such file or directory" }, { "sh", "No such file or directory" }, // no search path
        { folder.path() + "/plain/x", "Not a directory" }, { folder.path(), "Permission denied" },
        { folder.path() + "/plain", "Permission denied" },
        { folder.path() + "/notaprogram", "Exec format error" },
        { "/bin/true", "Argument list too long", megabyte } };
    const auto before = entriesIn("/proc/self/fd");
    for (const Case& c : cases) {
        ChildRequest request { .executable = c.executable, .arguments = { std::string(c.argument, 'x') } };
        request.input = "never read";
        const ChildOutcome outcome = run(request);
        EXPECT_EQ(outcome.launchError, c.message) << c.executable;
        EXPECT_EQ(outcome.output + outcome.errorOutput + std::to_string(outcome.status), "-1")
            << c.executable;
        EXPECT_TRUE(nothingToReap()) << c.executable;
    }
    EXPECT_EQ(entriesIn("/proc/self/fd"), before);
}

TEST(LinuxChildProcess, TheDeadlineEndsAChildAlsoOneThatRefusesAndKeepsWhatItWrote)
{
    for (const auto& [script, status] :
        { std::pair { "printf before; printf why >&2; exec sleep 600", SIGTERM },
            { "trap '' TERM; printf before; printf why >&2; while :; do sleep 0.05; done", SIGKILL } }) {
        ChildRequest request = shell(script);
        request.timeout = Seconds(1);
        request.killDelay = Seconds(0.1);
        const ChildOutcome outcome = run(request);
        EXPECT_EQ(outcome.status, status) << script;
        EXPECT_EQ(outcome.output + "|" + outcome.errorOutput, "before|why") << script;
        EXPECT_GE(outcome.elapsed, request.timeout) << script;
    }
    // A deadline that has passed before the child could start stops it all the same.
    ChildRequest late = shell("exec sleep 600");
    late.timeout = Seconds(-5);
    EXPECT_EQ(run(late).status, SIGTERM);
}

TEST(LinuxChildProcess, AStopAsksAndThenKillsTheWholeGroup)
{
    // Each writes the number of a process that must end to "$1" when it is ready: moved into place, so that
    // no half of it is read.
    const std::string ready = "echo $$ > $1.x; mv $1.x $1; ";
    const std::string forever = "while :; do sleep 0.01; done";
    struct Case {
        std::string script;
        int status;
        const char* output = "";
    };
    const Case cases[] { { ready + "exec sleep 600", SIGTERM },
        { "trap 'printf bye; exit 7' TERM; " + ready + forever, 7, "bye" },
        { "trap '' TERM; " + ready + forever, SIGKILL },
        // A grandchild that refuses, below a child that obeys at once.
        { "(trap '' TERM; sh -c 'echo $PPID > $0.x; mv $0.x $0' $1; " + forever + ") & wait", SIGTERM },
        // A child that has left its group.
        { "exec python3 -c 'import os,sys,time\n"
          "os.setpgid(0, os.getpgid(os.getppid()))\n"
          "open(sys.argv[1] + \".x\", \"w\").write(str(os.getpid()))\n"
          "os.rename(sys.argv[1] + \".x\", sys.argv[1])\n"
          "time.sleep(600)' $1",
            SIGTERM } };
    for (const Case& c : cases) {
        const TemporaryFolder folder;
        const std::string file = folder.path() + "/ready";
        LinuxChildProcess children;
        const auto stop = children.makeStop();
        ChildRequest request = shell(c.script, {}, { file });
        request.killDelay = Seconds(0.1);
        auto outcome = std::async(std::launch::async, [&] { return children.run(request, stop); });
        ASSERT_TRUE(appears(file)) << c.script;
        stop->stop();
        stop->stop();
        const ChildOutcome ended = outcome.get();
        EXPECT_EQ(ended.status, c.status) << c.script;
        EXPECT_EQ(ended.output, c.output) << c.script;
        int pid = 0;
        std::ifstream(file) >> pid;
        ASSERT_GT(pid, 1) << c.script;
        EXPECT_TRUE(eventually([pid] { return !isRunning(pid); })) << c.script;
        // Its number may be somebody else's by now.
        stop->stop();
    }
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
    constexpr const char* script = "for f in /proc/$$/fd/*; do [ -e $f ] && printf '%s ' ${f##*/}; done; "
                                   "grep -cE '^Sig(Blk|Ign):\\s*0*(180000000)?$' /proc/self/status";
    for (const std::optional<std::string>& input : { std::optional<std::string>(), { "x"s } })
        EXPECT_EQ(run(shell(script, input)).output, "0 1 2 2\n");
    std::signal(SIGHUP, hangup);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ::close(low);
    ::close(high);
}

TEST(LinuxChildProcess, StreamsStayApartWhenOurOwnStandardStreamsAreClosed)
{
    ForkedProcess process([] {
        for (const int stream : { 0, 1, 2 })
            ::close(stream);
        const ChildOutcome outcome = run(shell("cat; printf err >&2", "in"));
        EXPECT_EQ(outcome.output + "|" + outcome.errorOutput, "in|err");
    });
    EXPECT_EQ(process.wait(), 0);
}

TEST(LinuxChildProcess, WithTooFewDescriptorsALaunchFailsOrTheRunIsWhole)
{
    ForkedProcess process([] {
        int failed = 0;
        const int taken = ::dup(0); // the lowest free number
        ::close(taken);
        // The last ones leave none for the descriptor of the child, or for that of the stop.
        for (int more = 0; more < 12; ++more) {
            rlimit limit {};
            ::getrlimit(RLIMIT_NOFILE, &limit);
            limit.rlim_cur = static_cast<rlim_t>(taken + more);
            ::setrlimit(RLIMIT_NOFILE, &limit);
            const ChildOutcome outcome = run(shell("cat; exit 6", "in"));
            failed += outcome.status == -1;
            EXPECT_EQ(outcome.launchError + outcome.output + std::to_string(outcome.status),
                outcome.status == -1 ? "Too many open files-1" : "in6");
        }
        EXPECT_GT(failed, 5);
        EXPECT_LT(failed, 10);
        EXPECT_TRUE(nothingToReap());
    });
    EXPECT_EQ(process.wait(), 0);
}

} // namespace
