// SPDX-License-Identifier: Apache-2.0
/// What the analyst prints, whatever it is, becomes something to show.
#include "collector/Diagnosis.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const std::int32_t status : { 0, 1 })
        if (ostrel::readDiagnosis(text, status, "analyst").empty() && status != 0)
            std::abort();
    return 0;
}
