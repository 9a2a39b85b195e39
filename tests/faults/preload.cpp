// SPDX-License-Identifier: Apache-2.0
//
// A library to be loaded before the C library's: it lets one system call of the process that it is loaded
// into fail, fall short or hang. Tests only.
//
//   OSTREL_FAULT_KIND   open, read, write, sync, rename, unlink, mkdir, chmod, spawn, descriptor
//   OSTREL_FAULT_AT     which call of that kind, from 1
//   OSTREL_FAULT_DO     an error number, "short" (half of what was asked, for read and write), "hang"
//                       (until a signal comes that doesn't end the process, then as asked), "kill" (the
//                       process, before the call), or "term" (asks it to end, then as asked)
//   OSTREL_FAULT_COUNT  how many calls in a row from that one on, 1 if it isn't told
//   OSTREL_FAULT_BELOW  counts only calls whose path, or whose descriptor's, begins so; a pipe's is "pipe:"
//   OSTREL_FAULT_TOLD   a file that gets a line for each call that was hit
//
// Children of the process are left alone. Nothing here allocates, so that it may run in any place.

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#define EXPORTED extern "C" __attribute__((visibility("default")))

namespace {

enum class Deed { error, halve, hang, kill, term };

struct Plan {
    const char* kind = nullptr;
    const char* below = nullptr;
    const char* told = nullptr;
    long first = 0;
    long count = 1;
    Deed deed = Deed::error;
    int error = EIO;
    pid_t process = 0;
};

struct Word {
    const char* text;
    Deed deed;
};
constexpr Word deeds[] { { "short", Deed::halve }, { "hang", Deed::hang }, { "kill", Deed::kill },
    { "term", Deed::term } };
constexpr const char* ownerVariable = "OSTREL_FAULT_OWNER";

Plan plan;
std::atomic<long> calls { 0 };

__attribute__((constructor)) void takePlan()
{
    const char* kind = std::getenv("OSTREL_FAULT_KIND");
    const char* owner = std::getenv(ownerVariable);
    char own[24];
    std::snprintf(own, sizeof own, "%d", ::getpid());
    // A process that replaces itself by another program keeps its number.
    if (!kind || (owner && std::strcmp(owner, own) != 0))
        return;
    ::setenv(ownerVariable, own, 1);
    const char* at = std::getenv("OSTREL_FAULT_AT");
    const char* count = std::getenv("OSTREL_FAULT_COUNT");
    const char* deed = std::getenv("OSTREL_FAULT_DO");
    plan.below = std::getenv("OSTREL_FAULT_BELOW");
    plan.told = std::getenv("OSTREL_FAULT_TOLD");
    plan.first = at ? std::atol(at) : 0;
    plan.count = count ? std::atol(count) : 1;
    plan.process = ::getpid();
    if (deed && *deed >= '0' && *deed <= '9')
        plan.error = std::atoi(deed);
    for (const auto& [word, meant] : deeds)
        if (deed && std::strcmp(deed, word) == 0)
            plan.deed = meant;
    plan.kind = kind;
}

void tell(const char* kind, const char* path)
{
    if (!plan.told)
        return;
    char line[PATH_MAX + 64];
    const int length = std::snprintf(line, sizeof line, "%s %s\n", kind, path);
    const long file
        = ::syscall(SYS_openat, AT_FDCWD, plan.told, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (file >= 0 && length > 0)
        ::syscall(SYS_write, file, line, static_cast<std::size_t>(length));
    ::syscall(SYS_close, file);
}

bool concerns(const char* path)
{
    return !plan.below || std::strncmp(path, plan.below, std::strlen(plan.below)) == 0;
}

/// Counts a call. Whether it is to be hit; a hang is over by then and doesn't hit.
bool counts(const char* kind, const char* path, bool canHalve = false)
{
    const int before = errno;
    if (!concerns(path))
        return false;
    const long number = ++calls;
    if (number < plan.first || number >= plan.first + plan.count)
        return false;
    tell(kind, path);
    if (plan.deed == Deed::kill)
        ::syscall(SYS_kill, plan.process, SIGKILL);
    if (plan.deed == Deed::term)
        ::syscall(SYS_kill, plan.process, SIGTERM);
    if (plan.deed == Deed::hang)
        ::pause();
    if (plan.deed == Deed::hang || plan.deed == Deed::term) {
        errno = before;
        return false;
    }
    if (plan.deed == Deed::halve && !canHalve)
        return false;
    errno = plan.error;
    return true;
}

bool isOn(const char* kind)
{
    return plan.kind && std::strcmp(plan.kind, kind) == 0 && ::getpid() == plan.process;
}

void linkOf(int folder, char (&path)[PATH_MAX])
{
    char link[48];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", folder);
    const long length = ::syscall(SYS_readlinkat, AT_FDCWD, link, path, sizeof path - 1);
    path[length > 0 ? length : 0] = '\0';
}

bool hitsPath(const char* kind, int folder, const char* name)
{
    if (!isOn(kind))
        return false;
    if (name[0] == '/' || folder == AT_FDCWD)
        return counts(kind, name);
    char path[PATH_MAX];
    linkOf(folder, path);
    const std::size_t length = std::strlen(path);
    std::snprintf(path + length, sizeof path - length, "/%s", name);
    return counts(kind, path);
}

bool hitsDescriptor(const char* kind, int descriptor, bool canHalve = false)
{
    if (!isOn(kind))
        return false;
    char path[PATH_MAX];
    linkOf(descriptor, path);
    return counts(kind, path, canHalve);
}

/// How many bytes are asked for, once this call has been counted; -1 for a call that fails.
ssize_t granted(const char* kind, int descriptor, std::size_t wanted)
{
    if (!hitsDescriptor(kind, descriptor, true))
        return static_cast<ssize_t>(wanted);
    return plan.deed == Deed::halve ? static_cast<ssize_t>(wanted - wanted / 2) : -1;
}

/// The next function of that name.
template <typename Function>
Function* real(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

int openReally(int folder, const char* path, int flags, mode_t mode)
{
    if (hitsPath("open", folder, path))
        return -1;
    return static_cast<int>(::syscall(SYS_openat, folder, path, flags, mode));
}

mode_t modeOf(int flags, va_list arguments)
{
    return flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
}

} // namespace

/// The rest are the parameters in front of the path, with a comma behind them.
#define OPENS(name, folder, ...)                                                                             \
    EXPORTED int name(__VA_ARGS__ const char* path, int flags, ...)                                          \
    {                                                                                                        \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeOf(flags, arguments);                                                        \
        va_end(arguments);                                                                                   \
        return openReally(folder, path, flags, mode);                                                        \
    }
OPENS(open, AT_FDCWD)
OPENS(open64, AT_FDCWD)
OPENS(__open_2, AT_FDCWD)
OPENS(__open64_2, AT_FDCWD)
OPENS(openat, folder, int folder, )
OPENS(openat64, folder, int folder, )
OPENS(__openat_2, folder, int folder, )
OPENS(__openat64_2, folder, int folder, )

EXPORTED DIR* opendir(const char* path)
{
    return hitsPath("open", AT_FDCWD, path) ? nullptr : real<DIR*(const char*)>("opendir")(path);
}

EXPORTED ssize_t read(int descriptor, void* into, std::size_t count)
{
    const ssize_t most = granted("read", descriptor, count);
    return most < 0 ? -1 : ::syscall(SYS_read, descriptor, into, most);
}

EXPORTED ssize_t __read_chk(int descriptor, void* into, std::size_t count, std::size_t)
{
    return read(descriptor, into, count);
}

#define READS_AT(name)                                                                                       \
    EXPORTED ssize_t name(int descriptor, void* into, std::size_t count, off_t place)                        \
    {                                                                                                        \
        const ssize_t most = granted("read", descriptor, count);                                             \
        return most < 0 ? -1 : ::syscall(SYS_pread64, descriptor, into, most, place);                        \
    }
READS_AT(pread)
READS_AT(pread64)

EXPORTED ssize_t write(int descriptor, const void* from, std::size_t count)
{
    const ssize_t most = granted("write", descriptor, count);
    return most < 0 ? -1 : ::syscall(SYS_write, descriptor, from, most);
}

EXPORTED int fsync(int descriptor)
{
    return hitsDescriptor("sync", descriptor) ? -1 : static_cast<int>(::syscall(SYS_fsync, descriptor));
}

EXPORTED int fdatasync(int descriptor)
{
    return hitsDescriptor("sync", descriptor) ? -1 : static_cast<int>(::syscall(SYS_fdatasync, descriptor));
}

EXPORTED int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept
{
    if (hitsPath("rename", toFolder, to))
        return -1;
    return static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, 0));
}

EXPORTED int rename(const char* from, const char* to) noexcept
{
    return renameat(AT_FDCWD, from, AT_FDCWD, to);
}

EXPORTED int unlinkat(int folder, const char* path, int flags) noexcept
{
    return hitsPath("unlink", folder, path) ? -1
                                            : static_cast<int>(::syscall(SYS_unlinkat, folder, path, flags));
}

EXPORTED int unlink(const char* path) noexcept { return unlinkat(AT_FDCWD, path, 0); }
EXPORTED int rmdir(const char* path) noexcept { return unlinkat(AT_FDCWD, path, AT_REMOVEDIR); }

EXPORTED int mkdirat(int folder, const char* path, mode_t mode) noexcept
{
    return hitsPath("mkdir", folder, path) ? -1
                                           : static_cast<int>(::syscall(SYS_mkdirat, folder, path, mode));
}

EXPORTED int mkdir(const char* path, mode_t mode) noexcept { return mkdirat(AT_FDCWD, path, mode); }

EXPORTED int fchmod(int descriptor, mode_t mode) noexcept
{
    return hitsDescriptor("chmod", descriptor) ? -1
                                               : static_cast<int>(::syscall(SYS_fchmod, descriptor, mode));
}

EXPORTED int pipe2(int* ends, int flags) noexcept
{
    return isOn("descriptor") && counts("descriptor", "pipe:")
        ? -1
        : static_cast<int>(::syscall(SYS_pipe2, ends, flags));
}

EXPORTED int pipe(int* ends) noexcept { return pipe2(ends, 0); }

EXPORTED int memfd_create(const char* name, unsigned flags) noexcept
{
    return isOn("descriptor") && counts("descriptor", "memfd:")
        ? -1
        : static_cast<int>(::syscall(SYS_memfd_create, name, flags));
}

EXPORTED pid_t fork() noexcept
{
    return isOn("spawn") && counts("spawn", "fork") ? -1 : real<pid_t()>("fork")();
}

/// A vfork can't be passed on from a function that returns, so its child gets a copy of the memory.
EXPORTED pid_t vfork() noexcept { return fork(); }

#define SPAWNS(name)                                                                                         \
    EXPORTED int name(pid_t* pid, const char* path, const posix_spawn_file_actions_t* actions,               \
        const posix_spawnattr_t* attributes, char* const arguments[], char* const environment[]) noexcept    \
    {                                                                                                        \
        if (isOn("spawn") && counts("spawn", path))                                                          \
            return plan.error;                                                                               \
        return real<decltype(name)>(#name)(pid, path, actions, attributes, arguments, environment);          \
    }
SPAWNS(posix_spawn)
SPAWNS(posix_spawnp)
