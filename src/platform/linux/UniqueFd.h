// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include <unistd.h>

namespace platform {

/// Owns one file descriptor and closes it. -1 owns none.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd)
        : fd_(fd)
    {
    }
    UniqueFd(UniqueFd&& other) noexcept
        : fd_(std::exchange(other.fd_, -1))
    {
    }
    UniqueFd& operator=(UniqueFd&& other) noexcept
    {
        std::swap(fd_, other.fd_);
        other.reset();
        return *this;
    }
    ~UniqueFd() { reset(); }

    [[nodiscard]] int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

    void reset()
    {
        if (fd_ >= 0)
            ::close(std::exchange(fd_, -1));
    }

private:
    int fd_ = -1;
};

} // namespace platform
