// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>

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

/// The line mark of the instrument: a rounded square, a glyph inside it, a small red tab on its top edge.
namespace ZOLAppMarkPath {

/// The side of the square drawing area.
inline constexpr double canvas = 48;
inline constexpr double strokeWidth = 2;

[[nodiscard]] std::span<const ZOLAppMarkCommand> square();
[[nodiscard]] std::span<const ZOLAppMarkCommand> glyph();
[[nodiscard]] std::span<const ZOLAppMarkCommand> signal();

} // namespace ZOLAppMarkPath

} // namespace ostrel
