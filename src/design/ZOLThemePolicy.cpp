// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLThemePolicy.h"

namespace ostrel::ZOLThemePolicy {

std::string_view glyph(Mode mode) { return mode == Mode::dark ? "■" : "□"; }

std::string_view accessibilityDescription(Mode mode)
{
    return mode == Mode::dark ? "black theme, switch to white" : "white theme, switch to black";
}

std::string key(std::optional<std::string_view> bundleIdentifier)
{
    return std::string(bundleIdentifier.value_or("zol.app")).append(".theme");
}

std::string_view rawValue(Mode mode) { return mode == Mode::dark ? "dark" : "light"; }

Mode resolve(std::optional<std::string_view> raw)
{
    for (const Mode mode : modes)
        if (raw == rawValue(mode))
            return mode;
    return themeDefault;
}

Mode load(const platform::UserDefaults& defaults, std::string_view key)
{
    const auto stored = defaults.text(key);
    return stored ? resolve(*stored) : themeDefault;
}

void store(Mode mode, platform::UserDefaults& defaults, std::string_view key)
{
    defaults.setText(key, rawValue(mode));
}

} // namespace ostrel::ZOLThemePolicy
