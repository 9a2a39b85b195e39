// SPDX-License-Identifier: Apache-2.0
#include "bar/BarStateFile.h"

#include "core/Text.h"

#include <cstddef>

namespace ostrel {

namespace {

constexpr std::size_t longestState = 65536;

} // namespace

std::string barStateFile(const platform::FileManager& files)
{
    return files.homeDirectory() + "/.config/zol-mini-apps/ostrel-bar-state.json";
}

std::optional<std::string> readBarState(const platform::FileManager& files)
{
    const auto text = files.read(barStateFile(files), longestState);
    if (!text)
        return std::nullopt;
    return std::string(trimmed(*text));
}

} // namespace ostrel
