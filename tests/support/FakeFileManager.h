// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/FileManager.h"

#include "support/CallLog.h"

#include <map>
#include <string>
#include <vector>

/// Files in memory.
class FakeFileManager final : public platform::FileManager, public Logged {
public:
    [[nodiscard]] std::string homeDirectory() const override { return home; }
    [[nodiscard]] bool fileExists(const std::string& path) const override
    {
        note("looks for " + path);
        return contents.contains(path);
    }

    [[nodiscard]] std::optional<std::string> read(const std::string& path, std::size_t limit) const override
    {
        note("reads " + path);
        const auto found = contents.find(path);
        if (found == contents.end() || found->second.size() > limit)
            return std::nullopt;
        return found->second;
    }

    bool createDirectories(const std::string& path) override
    {
        folders.push_back(path);
        return !full;
    }

    bool replace(const std::string& path, std::string_view text) override
    {
        note("writes " + path);
        ++writes;
        contents[path] = text;
        return true;
    }

    bool appendLine(const std::string& path, std::string_view line) override
    {
        if (full)
            return false;
        contents[path].append(line).append("\n");
        return true;
    }

    std::string home = "/home/someone";
    std::map<std::string, std::string> contents;
    std::vector<std::string> folders; ///< that were to be made
    bool full = false; ///< neither folders nor lines can be added
    int writes = 0;
};
