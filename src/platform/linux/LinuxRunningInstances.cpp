// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxRunningInstances.h"

#include "platform/linux/ProcFields.h"
#include "platform/linux/SmallFile.h"
#include "platform/linux/UniqueFd.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr int startField = 22; ///< of /proc/{pid}/stat
/// A number of 64 bits and a line break fit.
constexpr std::size_t longestText = 24;
constexpr mode_t othersMode = 077;
constexpr std::string_view unfinishedEnd = ".new";

/// The whole text as a number above zero, written as this program writes it.
template <typename Number>
std::optional<Number> wholeNumber(std::string_view text)
{
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 1 || text.starts_with('0'))
        return std::nullopt;
    return value;
}

std::optional<std::uint64_t> startOf(int pid)
{
    const auto stat = readSmallFile("/proc/" + std::to_string(pid) + "/stat");
    return stat ? parseStartTicks(*stat) : std::nullopt;
}

/// The start that a file tells. Nothing where it isn't a small regular file of this user's.
std::optional<std::uint64_t> recordedStart(const UniqueFd& folder, const char* name)
{
    // A pipe in the file's place must not hold the caller.
    const UniqueFd file(
        ::openat(folder.get(), name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
    struct stat about { };
    if (!file || ::fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode) || about.st_uid != ::geteuid())
        return std::nullopt;
    std::array<char, longestText> text {};
    const ssize_t count = ::read(file.get(), text.data(), text.size());
    if (count <= 0 || text[static_cast<std::size_t>(count) - 1] != '\n')
        return std::nullopt;
    return wholeNumber<std::uint64_t>({ text.data(), static_cast<std::size_t>(count) - 1 });
}

/// Makes the file whole, or not at all: one who reads it meanwhile would remove a half-written one.
bool record(const UniqueFd& folder, const std::string& name, std::uint64_t start)
{
    const std::string text = std::to_string(start) + "\n";
    const std::string unfinished = name + std::string(unfinishedEnd);
    ::unlinkat(folder.get(), unfinished.c_str(), 0);
    const UniqueFd file(::openat(
        folder.get(), unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (file && ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size())
        && ::renameat(folder.get(), unfinished.c_str(), folder.get(), name.c_str()) == 0)
        return true;
    ::unlinkat(folder.get(), unfinished.c_str(), 0);
    return false;
}

} // namespace

LinuxRunningInstances::LinuxRunningInstances(std::string folder)
    : folder_(std::move(folder))
{
}

LinuxRunningInstances::~LinuxRunningInstances() { LinuxRunningInstances::withdraw(); }

void LinuxRunningInstances::withdraw()
{
    // A copy of this process that was forked off has a process id of its own, and leaves the file alone.
    const int pid = std::exchange(registeredPid_, 0);
    if (pid != ::getpid())
        return;
    if (const UniqueFd folder = openFolder())
        ::unlinkat(folder.get(), std::to_string(pid).c_str(), 0);
}

std::string LinuxRunningInstances::defaultFolder()
{
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime && *runtime == '/')
        return std::string(runtime) + "/ostrel";
    return "/tmp/ostrel-" + std::to_string(::geteuid());
}

UniqueFd LinuxRunningInstances::openFolder() const
{
    UniqueFd folder(::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat about { };
    if (folder && ::fstat(folder.get(), &about) == 0 && about.st_uid == ::geteuid()
        && (about.st_mode & othersMode) == 0)
        return folder;
    return {};
}

RunningInstance LinuxRunningInstances::current()
{
    const int pid = ::getpid();
    const auto start = startOf(pid);
    ::mkdir(folder_.c_str(), S_IRWXU);
    const UniqueFd folder = openFolder();
    const std::string name = std::to_string(pid);
    if (folder && start && (recordedStart(folder, name.c_str()) == start || record(folder, name, *start)))
        registeredPid_ = pid;
    return { .pid = pid, .launch = start };
}

std::vector<RunningInstance> LinuxRunningInstances::others()
{
    const UniqueFd folder = openFolder();
    // The reading takes a descriptor of its own over.
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(
        folder ? ::fdopendir(::fcntl(folder.get(), F_DUPFD_CLOEXEC, 0)) : nullptr, &::closedir);
    std::vector<RunningInstance> found;
    while (const dirent* entry = entries ? ::readdir(entries.get()) : nullptr) {
        std::string_view name = entry->d_name;
        const bool unfinished = name.ends_with(unfinishedEnd);
        if (unfinished)
            name.remove_suffix(unfinishedEnd.size());
        const auto pid = wholeNumber<int>(name);
        if (!pid || *pid == ::getpid())
            continue;
        const auto start = startOf(*pid);
        if (unfinished && start)
            continue; // it may be about to be renamed
        const auto recorded = unfinished ? std::nullopt : recordedStart(folder, entry->d_name);
        if (start && recorded == start)
            found.push_back({ .pid = *pid, .launch = start });
        else
            ::unlinkat(folder.get(), entry->d_name, 0);
    }
    std::ranges::sort(found, {}, &RunningInstance::pid);
    return found;
}

std::optional<std::uint64_t> parseStartTicks(std::string_view stat)
{
    const auto state = statField(stat, 3);
    if (!state || state->empty() || state->front() == 'Z' || state->front() == 'X' || state->front() == 'x')
        return std::nullopt;
    const auto start = statField(stat, startField);
    return start ? wholeNumber<std::uint64_t>(*start) : std::nullopt;
}

} // namespace platform
