// SPDX-License-Identifier: Apache-2.0
/// The settings that an X desktop hands out, or whatever another program put in their place.
#include "platform/qt/XSettings.h"

#include "fuzz/FuzzTarget.h"

#include <vector>

void runOn(std::string_view text)
{
    std::vector<std::uint8_t> bytes(text.begin(), text.end());
    const auto found = platform::xsettingsInteger(bytes, "Xft/DPI");
    (void)platform::xsettingsInteger(bytes, "");
    // What was found is there still when the bytes go on.
    bytes.push_back(0);
    check(!found || platform::xsettingsInteger(bytes, "Xft/DPI") == found);
}
