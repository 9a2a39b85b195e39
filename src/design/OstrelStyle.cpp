// SPDX-License-Identifier: Apache-2.0
#include "design/OstrelStyle.h"

namespace ostrel {

std::string_view rawValue(ThemeMode mode) { return mode == ThemeMode::dark ? "dark" : "light"; }

namespace OstrelStyle {

std::optional<ZOLThemePolicy::Mode> override;

ZOLThemePolicy::Mode theme(const platform::UserDefaults& standard)
{
    return override ? *override : ZOLThemePolicy::load(standard, ZOLThemePolicy::key());
}

ThemeMode mode(const platform::UserDefaults& standard)
{
    return theme(standard) == ZOLThemePolicy::Mode::dark ? ThemeMode::dark : ThemeMode::light;
}

Color layerColor(const ThemedColor& color, const platform::UserDefaults& standard)
{
    return color.in(theme(standard));
}

} // namespace OstrelStyle

} // namespace ostrel
