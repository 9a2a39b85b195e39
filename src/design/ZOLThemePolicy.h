// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UserDefaults.h"

#include <optional>
#include <string_view>

namespace ostrel::ZOLThemePolicy {

/// The panel in white or in black, whatever the desktop's own appearance is.
enum class Mode { light, dark };

inline constexpr Mode themeDefault = Mode::light;
inline constexpr std::string_view themeKey = "dev.quent.ostrel.theme";

/// The stored word.
[[nodiscard]] std::string_view rawValue(Mode mode);
/// The mode of a stored word; the default for any other word and for none.
[[nodiscard]] Mode resolve(std::optional<std::string_view> raw);
/// The stored mode.
[[nodiscard]] Mode load(const platform::UserDefaults& defaults);

} // namespace ostrel::ZOLThemePolicy
