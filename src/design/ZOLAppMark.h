// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace ostrel {

/// One command of a mark's path, in mark units with y growing downward.
struct ZOLAppMarkCommand {
    enum class Kind { move, line, curve, close };

    Kind kind;
    double x = 0; ///< the end point; unused by close
    double y = 0;
    double x1 = 0; ///< a curve's first control point
    double y1 = 0;
    double x2 = 0; ///< a curve's second control point
    double y2 = 0;
};

/// The line marks of the family: a rounded square, a glyph inside it, and a small red tab on its top edge.
enum class ZOLAppMark { family, tessit, vormel, ostrel, pellam, ruvane };

namespace ZOLAppMarks {

inline constexpr std::array all { ZOLAppMark::family, ZOLAppMark::tessit, ZOLAppMark::vormel,
    ZOLAppMark::ostrel, ZOLAppMark::pellam, ZOLAppMark::ruvane };

/// The side of the square drawing area, in mark units.
inline constexpr double canvas = 48;
/// In mark units; thinner than a point where the mark is small.
inline constexpr double strokeWidth = 2;
/// Provenance: the digest of the paths, each as a line "{name}: {commands}", a command being M, L, C or Z
/// and its numbers, all parted by blanks; the square and the signal first, then the glyphs.
extern const std::string_view sourceSHA256;

[[nodiscard]] std::string_view rawValue(ZOLAppMark mark);
/// The mark of exactly that word; absent for any other.
[[nodiscard]] std::optional<ZOLAppMark> named(std::string_view word);
[[nodiscard]] std::string_view symbol(ZOLAppMark mark);
/// What a person reads.
[[nodiscard]] std::string_view label(ZOLAppMark mark);

[[nodiscard]] std::span<const ZOLAppMarkCommand> square();
[[nodiscard]] std::span<const ZOLAppMarkCommand> signal();
[[nodiscard]] std::span<const ZOLAppMarkCommand> glyph(ZOLAppMark mark);

} // namespace ZOLAppMarks

} // namespace ostrel
