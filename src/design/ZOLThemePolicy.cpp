// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLThemePolicy.h"

namespace ostrel::ZOLThemePolicy {

std::string_view rawValue(Mode mode) { return mode == Mode::dark ? "dark" : "light"; }

Mode resolve(std::optional<std::string_view> raw)
{
    for (const Mode mode : { Mode::light, Mode::dark })
        if (raw == rawValue(mode))
            return mode;
    return themeDefault;
}

Mode load(const platform::UserDefaults& defaults)
{
    const auto stored = defaults.text(themeKey);
    return stored ? resolve(*stored) : themeDefault;
}

} // namespace ostrel::ZOLThemePolicy
