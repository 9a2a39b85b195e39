// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UserDefaults.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel::ZOLThemePolicy {

/// The panel in white or in black, whatever the desktop's own appearance is.
enum class Mode { light, dark };

inline constexpr std::array modes { Mode::light, Mode::dark };
inline constexpr Mode themeDefault = Mode::light;
inline constexpr std::string_view applicationIdentifier = "dev.quent.ostrel";

/// What assistive technology finds the theme button by.
inline constexpr std::string_view identifier = "theme-toggle";
inline constexpr std::string_view tooltip
    = "theme: the panel in white or in black, the choice survives a restart";

/// The mark on the theme button.
[[nodiscard]] std::string_view glyph(Mode mode);
/// What the theme is, and what pressing the button does.
[[nodiscard]] std::string_view accessibilityDescription(Mode mode);

/// The settings key of an application's theme.
[[nodiscard]] std::string key(std::optional<std::string_view> bundleIdentifier = applicationIdentifier);

/// The stored word.
[[nodiscard]] std::string_view rawValue(Mode mode);
/// The mode of a stored word; the default for any other word and for none.
[[nodiscard]] Mode resolve(std::optional<std::string_view> raw);
/// The stored mode.
[[nodiscard]] Mode load(const platform::UserDefaults& defaults, std::string_view key);
void store(Mode mode, platform::UserDefaults& defaults, std::string_view key);

} // namespace ostrel::ZOLThemePolicy
