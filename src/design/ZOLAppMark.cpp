// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLAppMark.h"

#include <array>

namespace ostrel::ZOLAppMarkPath {

namespace {

using enum ZOLAppMarkCommand::Kind;

constexpr ZOLAppMarkCommand moveTo(double x, double y) { return { move, x, y }; }
constexpr ZOLAppMarkCommand lineTo(double x, double y) { return { line, x, y }; }
constexpr ZOLAppMarkCommand curveTo(double x1, double y1, double x2, double y2, double x, double y)
{
    return { curve, x, y, x1, y1, x2, y2 };
}
constexpr ZOLAppMarkCommand closePath() { return { close }; }

constexpr std::array squarePath { moveTo(13, 5), lineTo(35, 5), curveTo(39.4183, 5, 43, 8.5817, 43, 13),
    lineTo(43, 35), curveTo(43, 39.4183, 39.4183, 43, 35, 43), lineTo(13, 43),
    curveTo(8.5817, 43, 5, 39.4183, 5, 35), lineTo(5, 13), curveTo(5, 8.5817, 8.5817, 5, 13, 5),
    closePath() };

constexpr std::array glyphPath { moveTo(24, 13), lineTo(35, 19), lineTo(35, 31), lineTo(24, 37),
    lineTo(13, 31), lineTo(13, 19), closePath(), moveTo(13, 19), lineTo(24, 25), lineTo(35, 19) };

constexpr std::array signalPath { moveTo(32, 5), lineTo(38, 5), lineTo(38, 9), lineTo(32, 9), closePath() };

} // namespace

std::span<const ZOLAppMarkCommand> square() { return squarePath; }

std::span<const ZOLAppMarkCommand> glyph() { return glyphPath; }

std::span<const ZOLAppMarkCommand> signal() { return signalPath; }

} // namespace ostrel::ZOLAppMarkPath
