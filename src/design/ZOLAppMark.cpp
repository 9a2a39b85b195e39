// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLAppMark.h"

#include <algorithm>
#include <cstddef>

namespace ostrel::ZOLAppMarks {

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
constexpr std::array signalPath { moveTo(32, 5), lineTo(38, 5), lineTo(38, 9), lineTo(32, 9), closePath() };

constexpr std::array familyGlyph { moveTo(13, 34), lineTo(13, 15), lineTo(24, 26), lineTo(35, 15),
    lineTo(35, 34) };
constexpr std::array tessitGlyph { moveTo(13, 19), lineTo(35, 19), lineTo(30, 14), moveTo(35, 29),
    lineTo(13, 29), lineTo(18, 34) };
constexpr std::array vormelGlyph { moveTo(14, 13), lineTo(14, 35), moveTo(21, 18), lineTo(35, 18),
    moveTo(21, 24), lineTo(30, 24), moveTo(21, 30), lineTo(33, 30) };
constexpr std::array ostrelGlyph { moveTo(24, 13), lineTo(35, 19), lineTo(35, 31), lineTo(24, 37),
    lineTo(13, 31), lineTo(13, 19), closePath(), moveTo(13, 19), lineTo(24, 25), lineTo(35, 19) };
constexpr std::array pellamGlyph { moveTo(13, 20), lineTo(35, 20), moveTo(18, 13), lineTo(18, 20),
    moveTo(30, 13), lineTo(30, 20), moveTo(17, 30), lineTo(25, 30) };
constexpr std::array ruvaneGlyph { moveTo(24, 13), lineTo(24, 35), moveTo(13, 24), lineTo(35, 24) };

struct Mark {
    std::string_view word; ///< its raw value and its symbol
    std::string_view label;
    std::span<const ZOLAppMarkCommand> glyph;
};

/// In the order of the enumeration.
constexpr std::array<Mark, all.size()> marks { {
    { "family", "zolwerk", familyGlyph },
    { "tessit", "tessit loop", tessitGlyph },
    { "vormel", "vormel trim", vormelGlyph },
    { "ostrel", "ostrel", ostrelGlyph },
    { "pellam", "pellam dial", pellamGlyph },
    { "ruvane", "ruvane", ruvaneGlyph },
} };

const Mark& row(ZOLAppMark mark) { return marks[static_cast<std::size_t>(mark)]; }

} // namespace

constexpr std::string_view sourceSHA256 = "903749635527b1db23596bf04e85f04dbe82fd7aa4993613ab7752f73ad4ea8d";

std::string_view rawValue(ZOLAppMark mark) { return row(mark).word; }

std::optional<ZOLAppMark> named(std::string_view word)
{
    const auto at = std::ranges::find(all, word, rawValue);
    return at == all.end() ? std::nullopt : std::optional(*at);
}

std::string_view symbol(ZOLAppMark mark) { return row(mark).word; }

std::string_view label(ZOLAppMark mark) { return row(mark).label; }

std::span<const ZOLAppMarkCommand> square() { return squarePath; }

std::span<const ZOLAppMarkCommand> signal() { return signalPath; }

std::span<const ZOLAppMarkCommand> glyph(ZOLAppMark mark) { return row(mark).glyph; }

} // namespace ostrel::ZOLAppMarks
