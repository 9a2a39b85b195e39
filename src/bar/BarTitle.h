// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "readings/NativeStats.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// What the bar item shows.
enum class BarDisplayMode { mark, markValue, value, hidden };

/// A live value that the bar item can carry.
enum class BarPart { cpu, mem, swap, load, mcp };

inline constexpr std::array allBarDisplayModes { BarDisplayMode::mark, BarDisplayMode::markValue,
    BarDisplayMode::value, BarDisplayMode::hidden };
/// In their order on the bar.
inline constexpr std::array allBarParts { BarPart::cpu, BarPart::mem, BarPart::swap, BarPart::load,
    BarPart::mcp };

/// The stored word, which is also the one shown.
[[nodiscard]] std::string_view rawValue(BarDisplayMode mode);
[[nodiscard]] std::string_view rawValue(BarPart part);
/// Nothing for a word that names none.
[[nodiscard]] std::optional<BarDisplayMode> barDisplayMode(std::string_view word);
[[nodiscard]] std::optional<BarPart> barPart(std::string_view word);

[[nodiscard]] bool showsMark(BarDisplayMode mode);
[[nodiscard]] bool showsValue(BarDisplayMode mode);

/// Chosen parts by their stored words.
using BarParts = std::set<std::string, std::less<>>;

/// The parts of somebody who has chosen none: cpu and swap.
[[nodiscard]] const BarParts& defaultBarParts();

/// All that the bar's texts are made of.
struct BarReading {
    NativeStats stats;
    double cpu = 0; ///< percent
    std::optional<std::int64_t> mcp; ///< MCP processes in the last snapshot
    std::string_view source; ///< where the snapshot came from
};

/// The text beside, or in place of, the mark; empty in a mode without values.
[[nodiscard]] std::string barTitle(BarDisplayMode mode, const BarParts& parts, const BarReading& reading);

/// The widest such text to expect, so that a host can keep its width steady.
[[nodiscard]] std::string barLabelGuide(BarDisplayMode mode, const BarParts& parts);

/// How many figures a square has room for.
inline constexpr std::size_t mostBarFigures = 2;

/// The bare figures of the first parts, for a place too narrow for the text.
[[nodiscard]] std::vector<std::string> barFigures(const BarParts& parts, const BarReading& reading);

/// What assistive technology calls the item.
inline constexpr std::string_view barName = "ostrel";

/// What assistive technology tells of the item's use. `hotkeyLabel` is that of the settings.
[[nodiscard]] std::string barAccessibilityHelp(std::string_view hotkeyLabel);

/// The tooltip, also read by assistive technology.
[[nodiscard]] std::string barToolTip(const BarReading& reading);

/// The menu's first row.
[[nodiscard]] std::string barMenuHeadline(const BarReading& reading);

} // namespace ostrel
