// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ThemedColor.h"
#include "design/ZOLAppShellStyle.h"
#include "platform/UserDefaults.h"

#include <optional>
#include <string_view>

namespace ostrel {

/// The two looks of the older palette.
enum class ThemeMode { dark, light };

[[nodiscard]] std::string_view rawValue(ThemeMode mode);

/// What the system's own views draw with.
namespace OstrelStyle {

inline constexpr ThemedColor bg = ZOLAppShellStyle::role("canvas"); ///< the panel's ground
inline constexpr ThemedColor ink = ZOLAppShellStyle::role("text"); ///< text and figures
inline constexpr ThemedColor muted = ZOLAppShellStyle::role("text-secondary");
inline constexpr ThemedColor soft = ZOLAppShellStyle::role("text-disabled");
inline constexpr ThemedColor hair = ZOLAppShellStyle::role("divider"); ///< separators and outlines
inline constexpr ThemedColor fill = ZOLAppShellStyle::role("data"); ///< the ground of data
inline constexpr ThemedColor hover = ZOLAppShellStyle::role("hover");
inline constexpr ThemedColor red = ZOLAppShellStyle::role("selection"); ///< the one signal colour
inline constexpr ThemedColor redBright = red;
inline constexpr ThemedColor amber = muted;

inline constexpr double radius = 8;
/// Nothing in the panel is written smaller, in points.
inline constexpr double smallestText = 10;

/// Wins over the stored theme while it is set. Main thread.
extern std::optional<ZOLThemePolicy::Mode> override;

/// The theme as it is chosen at this moment.
[[nodiscard]] ZOLThemePolicy::Mode theme(const platform::UserDefaults& standard);
/// The same in the words of the older palette.
[[nodiscard]] ThemeMode mode(const platform::UserDefaults& standard);
/// A themed colour as a fixed one, in the chosen theme and not in the desktop's.
[[nodiscard]] Color layerColor(const ThemedColor& color, const platform::UserDefaults& standard);

} // namespace OstrelStyle

} // namespace ostrel
