// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/Color.h"
#include "design/ThemedColor.h"
#include "design/ZOLMiniAppTokens.h"

#include <optional>
#include <string_view>

/// The frame that the family's applications share, as colours, sizes in points and durations in seconds. All
/// come from the tokens, each with a value of its own for a row that is missing.
namespace ostrel::ZOLAppShellStyle {

/// The colour of one row in both sets: white without a light row, the light row without a dark one, ink
/// without either.
[[nodiscard]] constexpr ThemedColor themed(ThemedColor::Layer layer, std::string_view token,
    std::optional<std::string_view> light, std::optional<std::string_view> dark)
{
    return { layer, token, zolHex(light.value_or("#ffffff")),
        zolHex(dark ? *dark : light.value_or("#202124")) };
}

/// The colour of a semantic token.
[[nodiscard]] constexpr ThemedColor role(std::string_view token)
{
    return themed(ThemedColor::Layer::semantic, token, ZOLMiniAppTokens::N1.semantic.find(token),
        ZOLMiniAppTokens::N1Dark.semantic.find(token));
}

/// The colour of a component token.
[[nodiscard]] constexpr ThemedColor componentRole(std::string_view token)
{
    return themed(ThemedColor::Layer::component, token, ZOLMiniAppTokens::N1.component.find(token),
        ZOLMiniAppTokens::N1Dark.component.find(token));
}

inline constexpr ThemedColor canvas = role("canvas");
inline constexpr ThemedColor surface = role("surface");
inline constexpr ThemedColor ink = role("text");
inline constexpr ThemedColor muted = role("text-secondary");
inline constexpr ThemedColor disabled = role("text-disabled");
inline constexpr ThemedColor divider = role("divider");
inline constexpr ThemedColor hover = role("hover");
inline constexpr ThemedColor selected = role("selected");
inline constexpr ThemedColor data = role("data");
inline constexpr ThemedColor signal = role("selection");

/// What a mark stands on: it stays light in both themes.
inline constexpr Color plate = zolHex(ZOLMiniAppTokens::N1.semantic.find("canvas").value_or("#ffffff"));

inline constexpr double inset = 16;
inline constexpr double gap = 8;
inline constexpr double controlHeight = 28;
inline constexpr double rowMarkSize = 16;
inline constexpr double rowHeight = 36;
inline constexpr double quietHeight = 22;
inline constexpr double markSize = 40;
inline constexpr double titleSize = 20;
inline constexpr double subtitleSize = 10;

/// The length of an N1 row, or the fallback where the row is missing or isn't a number.
[[nodiscard]] double length(std::string_view semanticToken, double fallback);

[[nodiscard]] double controlRadius();
[[nodiscard]] double footerSize();

[[nodiscard]] double panelAppear(bool reduceMotion);
[[nodiscard]] double windowAppear(bool reduceMotion);
/// How far below its place a window starts, in points; 0 under reduced motion.
[[nodiscard]] double windowAppearShift(bool reduceMotion);

} // namespace ostrel::ZOLAppShellStyle
