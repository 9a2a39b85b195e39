// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <functional>
#include <string>

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

/// A piece of a test in a process of its own, for what can't be undone in this one: limits, users, closed
/// streams, sudden death. Expectations inside it print as usual and make its status 1. Killed and taken off
/// the kernel's list at the latest with the object.
class ForkedProcess {
public:
    explicit ForkedProcess(const std::function<void()>& body)
    {
        std::fflush(nullptr);
        pid_ = ::fork();
        if (pid_ != 0)
            return;
        body();
        std::fflush(nullptr);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }

    ForkedProcess(const ForkedProcess&) = delete;
    ForkedProcess& operator=(const ForkedProcess&) = delete;

    ~ForkedProcess()
    {
        if (pid_ > 0)
            ::kill(pid_, SIGKILL);
        wait();
    }

    /// Its number; -1 after `wait`.
    [[nodiscard]] pid_t pid() const { return pid_; }

    /// Waits for its end: the exit status, or the number of the signal that ended it, below zero.
    int wait()
    {
        int status = 0;
        while (pid_ > 0 && ::waitpid(pid_, &status, 0) < 0 && errno == EINTR) { }
        pid_ = -1;
        return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    }

private:
    pid_t pid_ = -1;
};

/// Makes the calling process, a forked one, one of a user without privileges and without an entry in the
/// password database, who owns the folder. Nothing when it has no privileges already.
inline void becomeOrdinaryUser(const std::string& folder)
{
    constexpr unsigned nobodyKnown = 54321;
    if (::geteuid() != 0)
        return;
    if (::chown(folder.c_str(), nobodyKnown, nobodyKnown) != 0 || ::setgroups(0, nullptr) != 0
        || ::setgid(nobodyKnown) != 0 || ::setuid(nobodyKnown) != 0)
        ADD_FAILURE() << "can't give up privileges";
}
