// SPDX-License-Identifier: Apache-2.0
/// Whatever a script prints is read or refused, and what was read can be printed again as valid JSON.
#include "collector/OstrelData.h"
#include "core/Json.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto object = ostrel::json::parseObject(text);
    if (!object)
        return 0;
    const auto snapshot = ostrel::OstrelData::parse(*object);
    for (const auto& row : snapshot.procs)
        if (row.pid.size() > size)
            std::abort();
    if (ostrel::json::parseObject(ostrel::json::dump(*object)) != *object)
        std::abort();
    return 0;
}
