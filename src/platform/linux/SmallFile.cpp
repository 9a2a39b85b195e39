// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/SmallFile.h"

#include <array>
#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <unistd.h>

namespace platform {

std::optional<std::string> readSmallFile(const std::string& path)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return std::nullopt;
    std::array<char, 4096> buffer {};
    ssize_t count = 0;
    do
        count = ::read(fd, buffer.data(), buffer.size());
    while (count < 0 && errno == EINTR);
    ::close(fd);
    if (count < 0)
        return std::nullopt;
    return std::string(buffer.data(), static_cast<std::size_t>(count));
}

} // namespace platform
