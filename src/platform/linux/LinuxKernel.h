// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Kernel.h"

#include <array>
#include <string>
#include <string_view>

namespace platform {

/// The running kernel, read through files of /proc that stay open between readings. Allocates nothing after
/// its first reading.
class LinuxKernel final : public Kernel {
public:
    /// `procRoot` is where the files stand, without a trailing slash.
    explicit LinuxKernel(const std::string& procRoot = "/proc");
    LinuxKernel(const LinuxKernel&) = delete;
    LinuxKernel& operator=(const LinuxKernel&) = delete;
    ~LinuxKernel() override;

    [[nodiscard]] KernelReading read() override;
    [[nodiscard]] std::optional<CpuTicks> cpuTicks() override;

private:
    /// One file that is opened on its first read and read again from its start each time. A file that can't
    /// be opened or read gives an empty text and is tried again at the next reading.
    class KeptFile {
    public:
        explicit KeptFile(std::string path);
        KeptFile(const KeptFile&) = delete;
        KeptFile& operator=(const KeptFile&) = delete;
        ~KeptFile();

        /// The text, in the given buffer; cut where the buffer ends.
        [[nodiscard]] std::string_view read(std::array<char, 4096>& buffer);

    private:
        std::string path_;
        int fd_ = -1;
    };

    KeptFile memInfo_;
    KeptFile stat_;
    KeptFile loadAverage_;
    KeptFile memoryStall_;
    std::array<char, 4096> buffer_ {};
    int pressureLevel_ = 0;
    std::uint64_t idle_ = 0;
};

} // namespace platform
