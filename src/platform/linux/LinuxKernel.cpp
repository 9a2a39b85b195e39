// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxKernel.h"

#include "platform/linux/ActiveProcessors.h"
#include "platform/linux/ProcFields.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::uint64_t bytesPerKiB = 1024;

/// Waiting for disks is counted per processor and may step back a little when a task moves. Beyond this many
/// ticks (ten seconds at the usual hundred a second) the counter was really reset.
constexpr std::uint64_t smallestReset = 1000;

} // namespace

LinuxKernel::KeptFile::KeptFile(std::string path)
    : path_(std::move(path))
{
}

LinuxKernel::KeptFile::~KeptFile()
{
    if (fd_ >= 0)
        ::close(fd_);
}

std::string_view LinuxKernel::KeptFile::read(std::array<char, 4096>& buffer)
{
    if (fd_ < 0)
        fd_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0)
        return {};
    ssize_t count = 0;
    do
        count = ::pread(fd_, buffer.data(), buffer.size(), 0);
    while (count < 0 && errno == EINTR);
    if (count < 0) {
        ::close(std::exchange(fd_, -1));
        return {};
    }
    return { buffer.data(), static_cast<std::size_t>(count) };
}

LinuxKernel::LinuxKernel(const std::string& procRoot)
    : memInfo_(procRoot + "/meminfo")
    , stat_(procRoot + "/stat")
    , loadAverage_(procRoot + "/loadavg")
    , memoryStall_(procRoot + "/pressure/memory")
{
}

LinuxKernel::~LinuxKernel() = default;

KernelReading LinuxKernel::read()
{
    KernelReading reading;
    const MemInfo memory = parseMemInfo(memInfo_.read(buffer_));
    reading.swapTotalBytes = memory.swapTotal.value_or(0) * bytesPerKiB;
    reading.swapUsedBytes = memory.swapUsedKiB() * bytesPerKiB;
    reading.physicalMemoryBytes = memory.memTotal.value_or(0) * bytesPerKiB;
    reading.usedBytes = memory.usedKiB() * bytesPerKiB;
    reading.freeBytes = memory.memFree.value_or(0) * bytesPerKiB;
    reading.load1 = parseLeadingNumber(loadAverage_.read(buffer_));
    reading.activeProcessorCount = activeProcessors();
    pressureLevel_
        = pressureLevel(parseMemoryStall(memoryStall_.read(buffer_)), memory.headroom(), pressureLevel_);
    reading.pressureLevel = pressureLevel_;
    return reading;
}

std::optional<CpuTicks> LinuxKernel::cpuTicks()
{
    const auto times = parseCpuLine(stat_.read(buffer_));
    if (!times)
        return std::nullopt;
    const bool steppedBack = times->idle < idle_ && idle_ - times->idle < smallestReset;
    if (!steppedBack)
        idle_ = times->idle;
    return CpuTicks { .user = static_cast<std::uint32_t>(times->user),
        .system = static_cast<std::uint32_t>(times->system),
        .idle = static_cast<std::uint32_t>(idle_),
        .nice = static_cast<std::uint32_t>(times->nice) };
}

} // namespace platform
