// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

/// Far beyond what anything waited for takes, also under a sanitizer on a busy machine.
inline constexpr std::chrono::seconds generousLimit { 60 };

/// Waits until the condition holds; false when it doesn't within the generous limit.
template <typename Condition>
bool eventually(Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + generousLimit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::yield();
    }
    return true;
}

/// Waits until a file stands at the path.
inline bool appears(const std::string& path)
{
    return eventually([&path] { return std::filesystem::exists(path); });
}

/// Whether a process still does something: it is listed, and not only for its parent to read its status.
inline bool isRunning(int pid)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    std::getline(file, line);
    const auto bracket = line.rfind(") ");
    return bracket != std::string::npos && line[bracket + 2] != 'Z' && line[bracket + 2] != 'X';
}

/// How many entries a folder has.
inline std::ptrdiff_t entriesIn(const std::string& folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}
