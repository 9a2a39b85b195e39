// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/FileManager.h"

#include <atomic>
#include <cstdint>

namespace platform {

/// The machine's files.
///
/// A replacement is written to "{path}.{pid}.{n}.tmp" beside the target, flushed to the disk, and renamed
/// over it. What a killed process left behind under such a name is removed by the next replacement of the
/// same target, from whichever process that comes. A target that is a symbolic link to a regular file of this
/// user's keeps being a link, as the settings of those who keep them elsewhere need it: the file behind it is
/// replaced. Any other link, a dangling one too, is itself replaced. A folder of this user's that is asked
/// for is closed to the writing of others.
class LinuxFileManager final : public FileManager {
public:
    /// $HOME, or else the password database; only an absolute path counts.
    [[nodiscard]] std::string homeDirectory() const override;
    [[nodiscard]] bool fileExists(const std::string& path) const override;
    [[nodiscard]] std::optional<std::string> read(const std::string& path, std::size_t limit) const override;
    bool createDirectories(const std::string& path) override;
    bool replace(const std::string& path, std::string_view contents) override;
    bool appendLine(const std::string& path, std::string_view line) override;

private:
    std::atomic<std::uint64_t> next_ { 0 }; ///< two replacements of one file may overlap
};

} // namespace platform
