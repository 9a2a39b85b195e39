// SPDX-License-Identifier: Apache-2.0
/// The settings that an X desktop hands out, or whatever another program put in their place.
#include "platform/qt/XSettings.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto found = platform::xsettingsInteger({ data, size }, "Xft/DPI");
    // What was found is there still when the bytes go on.
    std::vector<std::uint8_t> longer(data, data + size);
    longer.push_back(0);
    if (found && platform::xsettingsInteger(longer, "Xft/DPI") != found)
        std::abort();
    (void)platform::xsettingsInteger({ data, size }, "");
    return 0;
}
