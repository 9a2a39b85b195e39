// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Color.h"
#include "design/OstrelStyle.h"

namespace ostrel {

/// The older palette. Nothing on screen is painted from it; it is kept in step with the theme.
struct Theme {
    Color bg;
    Color ink;
    Color muted;
    Color soft;
    Color hair;
    Color fill;
    Color red;
    Color redBright;
    Color amber;

    static const Theme dark;
    static const Theme light;

    [[nodiscard]] static const Theme& named(ThemeMode mode);
};

inline constexpr Theme Theme::dark { zolHex("#1a1b1f"), zolHex("#e8e6e2"), zolHex("#9a958d"),
    zolHex("#3a3a40"), zolHex("#26262a"), zolHex("#202127"), zolHex("#c84545"), zolHex("#ff6b6b"),
    zolHex("#c7a648") };
inline constexpr Theme Theme::light { zolHex("#f4f2ec"), zolHex("#222019"), zolHex("#6e6a62"),
    zolHex("#cdcabf"), zolHex("#e0ddd4"), zolHex("#eae7df"), zolHex("#b23b2c"), zolHex("#cf4636"),
    zolHex("#8a6f1c") };

inline const Theme& Theme::named(ThemeMode mode) { return mode == ThemeMode::dark ? dark : light; }

/// The present choice of the older palette.
struct UI {
    ThemeMode mode = ThemeMode::light;
    Theme theme = Theme::light;

    void setMode(ThemeMode chosen)
    {
        mode = chosen;
        theme = Theme::named(chosen);
    }
};

} // namespace ostrel
