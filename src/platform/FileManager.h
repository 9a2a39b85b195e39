// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Files, as far as the system needs them. Any thread. Nothing here throws; a failure is the returned value.
class FileManager {
public:
    virtual ~FileManager() = default;

    /// The user's home directory without a trailing slash; empty when there is none.
    [[nodiscard]] virtual std::string homeDirectory() const = 0;

    /// Whether something readable as a file stands at the path, a directory not counted.
    [[nodiscard]] virtual bool fileExists(const std::string& path) const = 0;

    /// The whole file. Nothing when it can't be read, isn't a regular file, or holds more than `limit` bytes.
    [[nodiscard]] virtual std::optional<std::string> read(
        const std::string& path, std::size_t limit) const = 0;

    /// Makes the directory and its missing parents, for this user only (0700). True when it stands
    /// afterwards.
    virtual bool createDirectories(const std::string& path) = 0;

    /// Replaces the file's contents so that a reader, or a machine that loses power, finds the old contents
    /// or the new, never a mixture. The file is readable by this user only (0600). False when nothing
    /// changed.
    virtual bool replace(const std::string& path, std::string_view contents) = 0;

    /// Adds a line, which holds no line break itself, to the end of the file; makes the file for this user
    /// only (0600) where there is none. It goes out in one write, so writers at the same time, other
    /// processes too, lose nothing; a line that another writer couldn't finish is ended first. A link isn't
    /// followed. False when the line doesn't stand there whole.
    virtual bool appendLine(const std::string& path, std::string_view line) = 0;
};

/// What stands before the last slash of a path; empty when there is none.
[[nodiscard]] inline std::string parentDirectory(const std::string& path)
{
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

} // namespace platform
