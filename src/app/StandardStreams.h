// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <string_view>

namespace ostrel {

/// Writes as far as it can be written: a closed or full stream changes no exit code.
inline void say(std::FILE* stream, std::string_view text)
{
    [[maybe_unused]] const auto written = std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

} // namespace ostrel
