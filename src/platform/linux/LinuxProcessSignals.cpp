// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxProcessSignals.h"

#include "platform/linux/LinuxRunningInstances.h"
#include "platform/linux/ProcFields.h"
#include "platform/linux/SmallFile.h"
#include "platform/linux/UniqueFd.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr int flagsField = 9; ///< of /proc/{pid}/stat
constexpr unsigned long kernelThread = 0x00200000; ///< PF_KTHREAD

/// Whether a stat file is that of a kernel thread, or can't be read.
bool mayBeKernelThread(std::string_view stat)
{
    const auto text = statField(stat, flagsField);
    unsigned long flags = 0;
    return !text || std::from_chars(text->data(), text->data() + text->size(), flags).ec != std::errc()
        || (flags & kernelThread) != 0;
}

class PidfdProcess final : public HeldProcess {
public:
    explicit PidfdProcess(UniqueFd pidfd)
        : pidfd_(std::move(pidfd))
    {
    }

    [[nodiscard]] int terminate() override
    {
        // One that has ended takes signals without an error until its parent has asked how it ended.
        pollfd ended { pidfd_.get(), POLLIN, 0 };
        if (::poll(&ended, 1, 0) > 0)
            return ESRCH;
        return ::syscall(SYS_pidfd_send_signal, pidfd_.get(), SIGTERM, nullptr, 0) == 0 ? 0 : errno;
    }

private:
    UniqueFd pidfd_;
};

} // namespace

LinuxProcessSignals::LinuxProcessSignals(std::string procRoot)
    : procRoot_(std::move(procRoot))
{
}

Hold LinuxProcessSignals::hold(std::int64_t pid, std::int64_t start)
{
    if (neverSignalled(pid, start) || pid == ::getpid())
        return { nullptr, EINVAL };
    UniqueFd pidfd(static_cast<int>(::syscall(SYS_pidfd_open, static_cast<pid_t>(pid), 0)));
    if (!pidfd)
        return { nullptr, errno };
    // The start is read behind the opening. What is held was there before; so if the process at this number
    // has the wanted start now, it had the number all along and is the one that is held.
    const auto stat = readSmallFile(procRoot_ + "/" + std::to_string(pid) + "/stat");
    if (!stat)
        return { nullptr, ESRCH };
    if (mayBeKernelThread(*stat))
        return { nullptr, EINVAL };
    if (parseStartTicks(*stat) != static_cast<std::uint64_t>(start))
        return { nullptr, ESRCH };
    return { std::make_shared<PidfdProcess>(std::move(pidfd)), 0 };
}

} // namespace platform
