// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxBundle.h"

#include "platform/FileManager.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace platform {

LinuxBundle::LinuxBundle(std::string executableFolder)
    : executableFolder_(std::move(executableFolder))
{
}

std::string LinuxBundle::runningExecutableFolder()
{
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : parentDirectory(executable.string());
}

std::optional<std::string> LinuxBundle::pathForResource(std::string_view name) const
{
    if (executableFolder_.empty())
        return std::nullopt;
    for (const auto& base : { executableFolder_, parentDirectory(executableFolder_) }) {
        std::string path = base + "/share/ostrel/" + std::string(name);
        std::error_code error;
        if (std::filesystem::is_regular_file(path, error))
            return path;
    }
    return std::nullopt;
}

} // namespace platform
