// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/FileManager.h"

#include <map>
#include <string>

/// Files in memory.
class FakeFileManager final : public platform::FileManager {
public:
    [[nodiscard]] std::string homeDirectory() const override { return home; }
    [[nodiscard]] bool fileExists(const std::string& path) const override { return contents.contains(path); }

    [[nodiscard]] std::optional<std::string> read(const std::string& path, std::size_t limit) const override
    {
        const auto found = contents.find(path);
        if (found == contents.end() || found->second.size() > limit)
            return std::nullopt;
        return found->second;
    }

    bool createDirectories(const std::string&) override { return true; }

    bool replace(const std::string& path, std::string_view text) override
    {
        ++writes;
        contents[path] = text;
        return true;
    }

    std::string home = "/home/someone";
    std::map<std::string, std::string> contents;
    int writes = 0;
};
