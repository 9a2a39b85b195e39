// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/ChildLaunch.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr int firstFreeDescriptor = 3;

/// Both ends of a pipe, neither of them 0, 1 or 2, so that placing one child stream can't overwrite another's
/// end.
struct Pipe {
    UniqueFd read;
    UniqueFd write;

    /// 0, or the error number.
    int open()
    {
        int ends[2] = { -1, -1 };
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return errno;
        read = UniqueFd(ends[0]);
        write = UniqueFd(ends[1]);
        for (UniqueFd* end : { &read, &write }) {
            if (end->get() >= firstFreeDescriptor)
                continue;
            const int lifted = ::fcntl(end->get(), F_DUPFD_CLOEXEC, firstFreeDescriptor);
            if (lifted < 0)
                return errno;
            *end = UniqueFd(lifted);
        }
        return 0;
    }
};

void dontBlock(const UniqueFd& fd) { ::fcntl(fd.get(), F_SETFL, ::fcntl(fd.get(), F_GETFL) | O_NONBLOCK); }

class FileActions {
public:
    FileActions() { ::posix_spawn_file_actions_init(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    posix_spawn_file_actions_t* get() { return &actions_; }

private:
    posix_spawn_file_actions_t actions_ {};
};

class SpawnAttributes {
public:
    SpawnAttributes()
    {
        ::posix_spawnattr_init(&attributes_);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setsigdefault(&attributes_, &all);
        ::posix_spawnattr_setpgroup(&attributes_, 0);
        constexpr int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP;
        ::posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
    }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }
    posix_spawnattr_t* get() { return &attributes_; }

private:
    posix_spawnattr_t attributes_ {};
};

std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> list;
    list.reserve(texts.size() + 1);
    for (std::string& text : texts)
        list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

} // namespace

std::optional<LaunchedChild> launchChild(const ChildRequest& request, std::string& error)
{
    const auto failed = [&error](int number) {
        const char* words = ::strerrordesc_np(number);
        error = words ? words : "Unknown error " + std::to_string(number);
        return std::nullopt;
    };
    Pipe input;
    Pipe output;
    Pipe errorOutput;
    for (Pipe* pipe : { &output, &errorOutput })
        if (const int number = pipe->open())
            return failed(number);
    if (request.input)
        if (const int number = input.open())
            return failed(number);

    FileActions actions;
    if (request.input)
        ::posix_spawn_file_actions_adddup2(actions.get(), input.read.get(), STDIN_FILENO);
    else
        ::posix_spawn_file_actions_addopen(actions.get(), STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(actions.get(), output.write.get(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(actions.get(), errorOutput.write.get(), STDERR_FILENO);
    // Libraries open descriptors without the close-on-exec flag too.
    ::posix_spawn_file_actions_addclosefrom_np(actions.get(), firstFreeDescriptor);

    std::vector<std::string> arguments { request.executable };
    arguments.insert(arguments.end(), request.arguments.begin(), request.arguments.end());
    std::vector<std::string> environment;
    environment.reserve(request.environment.size());
    for (const auto& [name, value] : request.environment)
        environment.emplace_back(name).append("=").append(value);

    SpawnAttributes attributes;
    LaunchedChild child;
    const int number = ::posix_spawn(&child.pid, request.executable.c_str(), actions.get(), attributes.get(),
        pointers(arguments).data(), pointers(environment).data());
    if (number != 0)
        return failed(number);
    child.output = std::move(output.read);
    child.errorOutput = std::move(errorOutput.read);
    dontBlock(child.output);
    dontBlock(child.errorOutput);
    if (request.input) {
        child.input = std::move(input.write);
        dontBlock(child.input);
    }
    return child;
}

} // namespace platform
