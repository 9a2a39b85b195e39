// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/// What must hold of any input; the run ends where it doesn't.
inline void check(bool holds)
{
    if (!holds)
        std::abort();
}

/// A target defines it.
static void runOn(std::string_view text);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    runOn({ reinterpret_cast<const char*>(data), size });
    return 0;
}
