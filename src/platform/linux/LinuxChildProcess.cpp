// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxChildProcess.h"

#include "platform/linux/ChildLaunch.h"
#include "platform/linux/UniqueFd.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <mutex>
#include <string_view>
#include <utility>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {

namespace {

using SteadyClock = std::chrono::steady_clock;

/// A descriptor that becomes readable when the child ends; none on kernels before 5.3. The C library's own
/// declaration isn't usable from C++ in version 2.36.
UniqueFd openPidfd(pid_t pid) { return UniqueFd(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0))); }

/// How often a child is looked at where the kernel gives no descriptor for it.
constexpr int pollWithoutPidfd = 20;

/// The hand on a child, shared by the thread that serves it and those that may stop it. The lock keeps a
/// signal from reaching a number that the kernel has given to somebody else: the child isn't reaped while a
/// signal is on its way.
class LinuxChildStop final : public ChildStop {
public:
    LinuxChildStop()
        : wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
    }

    void stop() override
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(requested_, true))
            return;
        signalGroup(SIGTERM);
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto written = ::write(wake_.get(), &one, sizeof one);
    }

    /// Becomes readable when a stop was asked for.
    [[nodiscard]] int wakeFd() const { return wake_.get(); }

    [[nodiscard]] bool requested()
    {
        const std::lock_guard lock(mutex_);
        return requested_;
    }

    void started(pid_t pid)
    {
        const std::lock_guard lock(mutex_);
        pid_ = pid;
        if (requested_)
            signalGroup(SIGTERM);
    }

    void kill()
    {
        const std::lock_guard lock(mutex_);
        signalGroup(SIGKILL);
    }

    /// Takes the ended child off the kernel's list and gives its status. When it had been asked to end, what
    /// is left of its group is killed first, while its number is still its own.
    int reap()
    {
        const std::lock_guard lock(mutex_);
        if (requested_)
            signalGroup(SIGKILL);
        siginfo_t info {};
        int result = 0;
        do
            result = ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED);
        while (result != 0 && errno == EINTR);
        pid_ = 0;
        return result == 0 ? info.si_status : -1;
    }

private:
    void signalGroup(int number)
    {
        if (pid_ <= 0)
            return;
        ::kill(-pid_, number);
        // A child that made a group of its own isn't reached through the one that it was given.
        if (::getpgid(pid_) != pid_)
            ::kill(pid_, number);
    }

    std::mutex mutex_;
    UniqueFd wake_;
    pid_t pid_ = 0;
    bool requested_ = false;
};

/// Keeps this thread from being told by a signal that the child no longer reads: the failing write says so
/// too.
class PipeSignalGuard {
public:
    PipeSignalGuard()
    {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        wasPending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    PipeSignalGuard(const PipeSignalGuard&) = delete;
    PipeSignalGuard& operator=(const PipeSignalGuard&) = delete;
    ~PipeSignalGuard()
    {
        const timespec now {};
        if (!wasPending_)
            while (sigtimedwait(&pipe_, nullptr, &now) > 0) { }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }

private:
    sigset_t pipe_ {};
    sigset_t before_ {};
    bool wasPending_ = false;
};

/// Serves one running child until it has ended.
class Service {
public:
    Service(
        const ChildRequest& request, LaunchedChild child, LinuxChildStop& stop, SteadyClock::time_point begin)
        : request_(request)
        , child_(std::move(child))
        , stop_(stop)
        , pidfd_(openPidfd(child_.pid))
        , deadline_(begin + std::chrono::duration_cast<SteadyClock::duration>(request.timeout))
        , unwritten_(request.input ? std::string_view(*request.input) : std::string_view())
    {
        if (unwritten_.empty())
            child_.input.reset();
    }

    void serve(ChildOutcome& outcome)
    {
        while (!hasEnded()) {
            waitForSomething(outcome);
            watchTheClock();
        }
        readWhatIsThere(child_.output, outcome.output);
        readWhatIsThere(child_.errorOutput, outcome.errorOutput);
        outcome.status = stop_.reap();
    }

private:
    enum Place { outputPlace, errorPlace, inputPlace, childPlace, wakePlace };

    [[nodiscard]] bool hasEnded() const
    {
        siginfo_t info {};
        const int result = ::waitid(P_PID, static_cast<id_t>(child_.pid), &info, WEXITED | WNOHANG | WNOWAIT);
        return result != 0 ? errno != EINTR : info.si_pid != 0;
    }

    void waitForSomething(ChildOutcome& outcome)
    {
        // A descriptor of -1 is passed over.
        std::array<pollfd, 5> watched { {
            { child_.output.get(), POLLIN, 0 },
            { child_.errorOutput.get(), POLLIN, 0 },
            { child_.input.get(), POLLOUT, 0 },
            { pidfd_.get(), POLLIN, 0 },
            { asked_ ? -1 : stop_.wakeFd(), POLLIN, 0 },
        } };
        if (::poll(watched.data(), watched.size(), millisecondsToWait()) <= 0)
            return;
        if (watched[outputPlace].revents)
            readSome(child_.output, outcome.output);
        if (watched[errorPlace].revents)
            readSome(child_.errorOutput, outcome.errorOutput);
        if (watched[inputPlace].revents)
            writeSome();
    }

    /// Asks at the deadline, and kills when asking didn't help.
    void watchTheClock()
    {
        const auto now = SteadyClock::now();
        if (!asked_ && now >= deadline_)
            stop_.stop();
        if (!asked_ && stop_.requested()) {
            asked_ = true;
            killAt_ = now + std::chrono::duration_cast<SteadyClock::duration>(request_.killDelay);
        }
        if (asked_ && !killed_ && now >= killAt_) {
            killed_ = true;
            if (!hasEnded())
                stop_.kill();
        }
    }

    [[nodiscard]] int millisecondsToWait() const
    {
        int longest = pidfd_ ? -1 : pollWithoutPidfd;
        if (killed_)
            return longest;
        const auto until = (asked_ ? killAt_ : deadline_) - SteadyClock::now();
        // Rounded up, so that the clock has really passed the instant when the wait is over.
        const auto whole = std::chrono::ceil<std::chrono::milliseconds>(until).count();
        constexpr std::int64_t longestWait = 3'600'000;
        const int wait = static_cast<int>(std::clamp<std::int64_t>(whole, 0, longestWait));
        return longest < 0 ? wait : std::min(longest, wait);
    }

    static void keep(std::string& into, const char* data, std::size_t count)
    {
        const std::size_t room = LinuxChildProcess::longestOutput - into.size();
        into.append(data, std::min(room, count));
    }

    void readSome(UniqueFd& from, std::string& into)
    {
        const ssize_t count = ::read(from.get(), buffer_.data(), buffer_.size());
        if (count > 0)
            keep(into, buffer_.data(), static_cast<std::size_t>(count));
        else if (count == 0 || (errno != EAGAIN && errno != EINTR))
            from.reset();
    }

    /// What stood in the pipe when the child had ended. No more than that: a grandchild may go on writing for
    /// ever.
    void readWhatIsThere(UniqueFd& from, std::string& into)
    {
        int waiting = 0;
        if (!from || ::ioctl(from.get(), FIONREAD, &waiting) != 0)
            return;
        while (waiting > 0) {
            const auto wanted = std::min(buffer_.size(), static_cast<std::size_t>(waiting));
            const ssize_t count = ::read(from.get(), buffer_.data(), wanted);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return;
            keep(into, buffer_.data(), static_cast<std::size_t>(count));
            waiting -= static_cast<int>(count);
        }
    }

    void writeSome()
    {
        const ssize_t count = ::write(child_.input.get(), unwritten_.data(), unwritten_.size());
        if (count >= 0)
            unwritten_.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EAGAIN && errno != EINTR)
            unwritten_ = {};
        if (unwritten_.empty())
            child_.input.reset();
    }

    const ChildRequest& request_;
    LaunchedChild child_;
    LinuxChildStop& stop_;
    UniqueFd pidfd_;
    SteadyClock::time_point deadline_;
    SteadyClock::time_point killAt_;
    bool asked_ = false;
    bool killed_ = false;
    std::string_view unwritten_;
    std::array<char, 65536> buffer_;
};

} // namespace

std::shared_ptr<ChildStop> LinuxChildProcess::makeStop() { return std::make_shared<LinuxChildStop>(); }

ChildOutcome LinuxChildProcess::run(const ChildRequest& request, const std::shared_ptr<ChildStop>& stop)
{
    const auto begin = SteadyClock::now();
    ChildOutcome outcome;
    if (auto child = launchChild(request, outcome.launchError)) {
        auto& hand = static_cast<LinuxChildStop&>(*stop);
        hand.started(child->pid);
        const PipeSignalGuard guard;
        Service(request, std::move(*child), hand, begin).serve(outcome);
    }
    outcome.elapsed = SteadyClock::now() - begin;
    return outcome;
}

Environment LinuxChildProcess::environment() const
{
    Environment variables;
    for (char** entry = ::environ; entry && *entry; ++entry) {
        const std::string_view text(*entry);
        const auto equals = text.find('=');
        if (equals != std::string_view::npos)
            variables.emplace(text.substr(0, equals), text.substr(equals + 1));
    }
    return variables;
}

} // namespace platform
