// SPDX-License-Identifier: Apache-2.0
#include "bar/BarTitle.h"

#include "core/Text.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::array<std::string_view, 4> modeWords { "mark", "mark + value", "value", "hidden" };
constexpr std::array<std::string_view, 5> partWords { "cpu", "mem", "swap", "load", "mcp" };

template <typename Enum, std::size_t n>
std::optional<Enum> named(const std::array<std::string_view, n>& words, std::string_view word)
{
    const auto at = std::ranges::find(words, word);
    if (at == words.end())
        return std::nullopt;
    return static_cast<Enum>(at - words.begin());
}

std::string piece(BarPart part, const BarReading& reading)
{
    switch (part) {
    case BarPart::cpu:
        return fmt::format("cpu {}%", rounded(reading.cpu));
    case BarPart::mem:
        return fmt::format("mem {}%", reading.stats.memPct());
    case BarPart::swap:
        return fmt::format("swap {}%", reading.stats.swapPct());
    case BarPart::load:
        return fmt::format("load {:.1f}", reading.stats.load1);
    case BarPart::mcp:
        return reading.mcp ? fmt::format("mcp {}", *reading.mcp) : "mcp …";
    }
    return {};
}

} // namespace

std::string_view rawValue(BarDisplayMode mode) { return modeWords[static_cast<std::size_t>(mode)]; }

std::string_view rawValue(BarPart part) { return partWords[static_cast<std::size_t>(part)]; }

std::optional<BarDisplayMode> barDisplayMode(std::string_view word)
{
    return named<BarDisplayMode>(modeWords, word);
}

std::optional<BarPart> barPart(std::string_view word) { return named<BarPart>(partWords, word); }

bool showsMark(BarDisplayMode mode)
{
    return mode == BarDisplayMode::mark || mode == BarDisplayMode::markValue;
}

bool showsValue(BarDisplayMode mode)
{
    return mode == BarDisplayMode::markValue || mode == BarDisplayMode::value;
}

const BarParts& defaultBarParts()
{
    static const BarParts parts { "cpu", "swap" };
    return parts;
}

std::string barTitle(BarDisplayMode mode, const BarParts& parts, const BarReading& reading)
{
    if (!showsValue(mode))
        return {};
    const BarParts& selected = parts.empty() ? defaultBarParts() : parts;
    std::vector<std::string> pieces;
    for (const BarPart part : allBarParts)
        if (selected.contains(rawValue(part)))
            pieces.push_back(piece(part, reading));
    if (pieces.empty())
        pieces.push_back(piece(BarPart::swap, reading));
    return (showsMark(mode) ? " " : "") + joined(pieces, " · ");
}

std::string barToolTip(const BarReading& reading)
{
    const NativeStats& stats = reading.stats;
    return fmt::format("ostrel · cpu {}% · mem {}% · swap {}% · free {} · {} · {}", rounded(reading.cpu),
        stats.memPct(), stats.swapPct(), memLabel(stats.freeMB), pressureName(stats.pressureLevel),
        reading.source);
}

std::string barMenuHeadline(const BarReading& reading)
{
    const NativeStats& stats = reading.stats;
    return fmt::format("ostrel · cpu {}% · mem {}% · swap {}% · {}", rounded(reading.cpu), stats.memPct(),
        stats.swapPct(), pressureName(stats.pressureLevel));
}

} // namespace ostrel
