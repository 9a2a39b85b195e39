// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxProcessSignals.h"

#include "platform/linux/LinuxRunningInstances.h"
#include "platform/linux/SmallFile.h"
#include "support/ForkedProcess.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

#include <cerrno>
#include <csignal>

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace platform;

std::string statOf(std::int64_t pid)
{
    return readSmallFile("/proc/" + std::to_string(pid) + "/stat").value_or("");
}

std::int64_t startOf(std::int64_t pid)
{
    return static_cast<std::int64_t>(parseStartTicks(statOf(pid)).value_or(0));
}

/// A child that waits for a signal.
struct Waiter : ForkedProcess {
    Waiter()
        : ForkedProcess([] {
            while (true)
                ::pause();
        })
    {
    }
    [[nodiscard]] Hold hold(std::int64_t after = 0) const
    {
        return LinuxProcessSignals().hold(pid(), startOf(pid()) + after);
    }
};

TEST(LinuxProcessSignals, TheProcessThatStartedThenIsAskedToEndAndNoOther)
{
    Waiter wanted;
    const Hold hold = wanted.hold();
    ASSERT_TRUE(hold.process);
    EXPECT_EQ(hold.error, 0);
    Waiter other;
    for (const std::int64_t after : { -1, 1, 100'000 }) {
        const Hold wrong = other.hold(after);
        EXPECT_FALSE(wrong.process);
        EXPECT_EQ(wrong.error, ESRCH);
    }
    EXPECT_EQ(hold.process->terminate(), 0);
    EXPECT_EQ(wanted.wait(), -SIGTERM) << "and not killed";
    EXPECT_EQ(hold.process->terminate(), ESRCH) << "its number is free by now";
    EXPECT_TRUE(isRunning(other.pid()));
}

TEST(LinuxProcessSignals, WhatHasEndedButIsStillListedHasEnded)
{
    Waiter waiter;
    const Hold hold = waiter.hold();
    const std::int64_t start = startOf(waiter.pid());
    ::kill(waiter.pid(), SIGKILL);
    ASSERT_TRUE(eventually([&] { return !isRunning(waiter.pid()); }));
    ASSERT_TRUE(hold.process);
    EXPECT_EQ(hold.process->terminate(), ESRCH);
    EXPECT_EQ(LinuxProcessSignals().hold(waiter.pid(), start).error, ESRCH);
}

TEST(LinuxProcessSignals, WhatIsNeverSignalledIsNeverHeld)
{
    const std::int64_t own = ::getpid();
    constexpr std::int64_t start = 1234;
    const std::pair<std::int64_t, std::int64_t> never[] { { 0, start }, { -1, start }, { -own, startOf(own) },
        { INT64_MIN, start }, { 1, startOf(1) }, { 1, start }, { own, startOf(own) }, { 2147483648, start },
        { 4294967296 + own, startOf(own) }, { INT64_MAX, start } };
    for (const auto& [pid, at] : never) {
        const Hold hold = LinuxProcessSignals().hold(pid, at);
        EXPECT_FALSE(hold.process) << pid;
        EXPECT_EQ(hold.error, EINVAL) << pid;
    }
    const Waiter waiter;
    for (const std::int64_t none : { 0, -5 })
        EXPECT_EQ(LinuxProcessSignals().hold(waiter.pid(), none).error, EINVAL) << "a start of no process";
}

TEST(LinuxProcessSignals, AKernelThreadOrWhatMayBeOneIsNeverHeld)
{
    const TemporaryFolder proc;
    const Waiter waiter;
    const std::string tail = " 10 11 12 13 14 15 16 17 18 19 20 21 555 23";
    const std::pair<std::string, int> cases[] { { "7 (a) S 1 1 1 0 -1 4194304" + tail, 0 },
        { "7 (kworker) S 1 1 1 0 -1 2129984" + tail, EINVAL },
        { "7 (kworker) S 1 1 1 0 -1 2097152" + tail, EINVAL },
        { "7 (a) S 0) S 1 1 1 0 -1 2097152" + tail, EINVAL }, { "7 (a) S 1 1 1 0 -1 flags" + tail, EINVAL },
        { "7 (a) S", EINVAL }, { "", EINVAL } };
    for (const auto& [stat, error] : cases) {
        proc.write(std::to_string(waiter.pid()) + "/stat", stat);
        const Hold hold = LinuxProcessSignals(proc.path()).hold(waiter.pid(), 555);
        EXPECT_EQ(hold.error, error) << stat;
        EXPECT_EQ(static_cast<bool>(hold.process), error == 0) << stat;
    }
}

TEST(LinuxProcessSignals, AnothersProcessIsRefusedByTheSystemAndLives)
{
    const TemporaryFolder folder;
    Waiter waiter;
    const std::int64_t pid = waiter.pid();
    const bool privileged = ::geteuid() == 0;
    if (!privileged)
        GTEST_SKIP() << "only an administrator can become another user";
    ForkedProcess stranger([&] {
        becomeOrdinaryUser(folder.path());
        const Hold hold = LinuxProcessSignals().hold(pid, startOf(pid));
        ASSERT_TRUE(hold.process);
        EXPECT_EQ(hold.process->terminate(), EPERM);
    });
    EXPECT_EQ(stranger.wait(), 0);
    EXPECT_TRUE(isRunning(static_cast<int>(pid)));
}

} // namespace
