// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxFileManager.h"

#include "platform/linux/UniqueFd.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::string_view temporaryEnd = ".tmp";
constexpr int mostAttempts = 16;
constexpr std::size_t longestPasswordEntry = std::size_t { 1 } << 20;

std::string withoutTrailingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

bool writeAll(const UniqueFd& file, std::string_view contents)
{
    while (!contents.empty()) {
        const ssize_t count = ::write(file.get(), contents.data(), contents.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        contents.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// Whether a file's name is one that `temporaryPath` gives for the target of that name.
bool isTemporaryOf(std::string_view name, std::string_view target)
{
    if (!name.starts_with(target) || !name.ends_with(temporaryEnd)
        || name.size() < target.size() + temporaryEnd.size())
        return false;
    const auto middle = name.substr(target.size(), name.size() - target.size() - temporaryEnd.size());
    const auto second = middle.rfind('.');
    const auto isNumber = [](std::string_view text) {
        return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    };
    return middle.starts_with('.') && second != 0 && isNumber(middle.substr(1, second - 1))
        && isNumber(middle.substr(second + 1));
}

/// Removes what killed writers left beside the target. A writer holds a lock on its temporary file until it
/// is renamed, so the one that can be locked has no writer any more, whatever became of its process number.
void removeLeftovers(const std::string& folder, const std::string& target)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.c_str()), &::closedir);
    if (!entries)
        return;
    const int within = ::dirfd(entries.get());
    while (const dirent* entry = ::readdir(entries.get())) {
        if (!isTemporaryOf(entry->d_name, target))
            continue;
        const UniqueFd file(::openat(within, entry->d_name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
        struct stat opened { };
        struct stat named { };
        // A writer that has just finished makes way for another of the same name: it is the name that is
        // removed.
        if (file && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0 && ::fstat(file.get(), &opened) == 0
            && S_ISREG(opened.st_mode) && ::fstatat(within, entry->d_name, &named, AT_SYMLINK_NOFOLLOW) == 0
            && opened.st_ino == named.st_ino)
            ::unlinkat(within, entry->d_name, 0);
    }
}

/// The file that a replacement goes to: what the path's link leads to when that is a regular file of this
/// user's, else the path.
std::string replacementTarget(const std::string& path)
{
    struct stat link { };
    if (::lstat(path.c_str(), &link) != 0 || !S_ISLNK(link.st_mode))
        return path;
    const std::unique_ptr<char, void (*)(void*)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    struct stat file { };
    if (!resolved || ::lstat(resolved.get(), &file) != 0 || !S_ISREG(file.st_mode)
        || file.st_uid != ::geteuid())
        return path;
    return resolved.get();
}

std::string temporaryPath(const std::string& target, std::uint64_t number)
{
    return target + "." + std::to_string(::getpid()) + "." + std::to_string(number)
        + std::string(temporaryEnd);
}

/// Makes a file of that name that nobody else has, locked for as long as it is open; none when it can't be
/// made.
UniqueFd makeTemporary(const std::string& path)
{
    UniqueFd file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    // Where the file system has no locks, nobody takes the file for a leftover either.
    if (file)
        ::flock(file.get(), LOCK_EX);
    struct stat made { };
    // Another writer's clearing up may have come between the making and the locking.
    if (file && (::fstat(file.get(), &made) != 0 || made.st_nlink == 0)) {
        file.reset();
        errno = EEXIST;
    }
    return file;
}

} // namespace

std::string LinuxFileManager::homeDirectory() const
{
    const char* home = std::getenv("HOME");
    if (home && *home == '/')
        return withoutTrailingSlashes(home);
    std::vector<char> buffer(std::size_t { 1 } << 14);
    passwd entry {};
    passwd* found = nullptr;
    while (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE
        && buffer.size() < longestPasswordEntry)
        buffer.resize(2 * buffer.size());
    if (!found)
        return {};
    const std::string_view folder = found->pw_dir ? found->pw_dir : "";
    return folder.starts_with('/') ? withoutTrailingSlashes(std::string(folder)) : std::string();
}

bool LinuxFileManager::fileExists(const std::string& path) const
{
    struct stat file { };
    return ::stat(path.c_str(), &file) == 0 && !S_ISDIR(file.st_mode) && ::access(path.c_str(), R_OK) == 0;
}

std::optional<std::string> LinuxFileManager::read(const std::string& path, std::size_t limit) const
{
    // A pipe or a device in the file's place must not hold the caller.
    const UniqueFd file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat about { };
    if (!file || ::fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode))
        return std::nullopt;
    std::string text;
    std::array<char, 65536> buffer;
    while (true) {
        const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            return text;
        if (static_cast<std::size_t>(count) > limit - text.size())
            return std::nullopt;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

bool LinuxFileManager::createDirectories(const std::string& path)
{
    if (path.empty())
        return false;
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        ::mkdir(path.substr(0, slash).c_str(), 0700);
        if (slash == std::string::npos)
            break;
    }
    struct stat folder { };
    if (::stat(path.c_str(), &folder) != 0 || !S_ISDIR(folder.st_mode))
        return false;
    constexpr mode_t othersWrite = S_IWGRP | S_IWOTH;
    if ((folder.st_mode & othersWrite) != 0 && folder.st_uid == ::geteuid())
        ::chmod(path.c_str(), folder.st_mode & ~othersWrite & ALLPERMS);
    return true;
}

bool LinuxFileManager::replace(const std::string& path, std::string_view contents)
{
    const std::string target = replacementTarget(path);
    const std::string folder = parentDirectory(target);
    const std::string name = target.substr(folder.size() + (target.find('/') == std::string::npos ? 0 : 1));
    removeLeftovers(folder.empty() ? "." : folder, name);
    std::string temporary;
    UniqueFd file;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        temporary = temporaryPath(target, next_++);
        file = makeTemporary(temporary);
        if (file || errno != EEXIST)
            break;
    }
    if (!file)
        return false;
    if (writeAll(file, contents) && ::fdatasync(file.get()) == 0
        && ::rename(temporary.c_str(), target.c_str()) == 0)
        return true;
    ::unlink(temporary.c_str());
    return false;
}

bool LinuxFileManager::appendLine(const std::string& path, std::string_view line)
{
    // A pipe or a device in the file's place must not hold the caller.
    const UniqueFd file(::open(
        path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600));
    struct stat about { };
    if (!file || ::fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode))
        return false;
    char last = '\n';
    if (about.st_size > 0 && ::pread(file.get(), &last, 1, about.st_size - 1) != 1)
        return false;
    std::string text(last == '\n' ? "" : "\n");
    text.append(line).append("\n");
    ssize_t count = 0;
    do
        count = ::write(file.get(), text.data(), text.size());
    while (count < 0 && errno == EINTR);
    // What is missing of a line can't follow it: another writer's may stand there by now.
    return count == static_cast<ssize_t>(text.size());
}

} // namespace platform
