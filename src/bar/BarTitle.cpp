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

std::string figure(BarPart part, const BarReading& reading)
{
    switch (part) {
    case BarPart::cpu:
        return fmt::format("{}%", rounded(reading.cpu));
    case BarPart::mem:
        return fmt::format("{}%", reading.stats.memPct());
    case BarPart::swap:
        return fmt::format("{}%", reading.stats.swapPct());
    case BarPart::load:
        return fmt::format("{:.1f}", reading.stats.load1);
    case BarPart::mcp:
        return reading.mcp ? fmt::format("{}", *reading.mcp) : "…";
    }
    return {};
}

/// In their order on the bar; never empty.
std::vector<BarPart> shownParts(const BarParts& parts)
{
    const BarParts& selected = parts.empty() ? defaultBarParts() : parts;
    std::vector<BarPart> shown;
    for (const BarPart part : allBarParts)
        if (selected.contains(rawValue(part)))
            shown.push_back(part);
    if (shown.empty())
        shown.push_back(BarPart::swap);
    return shown;
}

/// As wide as values get on an ordinary machine.
constexpr BarReading widestReading { .stats
    = { .swapUsedMB = 1, .swapTotalMB = 1, .load1 = 99.9, .usedBytes = 1, .totalBytes = 1 },
    .cpu = 100,
    .mcp = 999,
    .source = {} };

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
    std::vector<std::string> pieces;
    for (const BarPart part : shownParts(parts))
        pieces.push_back(fmt::format("{} {}", rawValue(part), figure(part, reading)));
    return (showsMark(mode) ? " " : "") + joined(pieces, " · ");
}

std::string barLabelGuide(BarDisplayMode mode, const BarParts& parts)
{
    return barTitle(mode, parts, widestReading);
}

std::vector<std::string> barFigures(const BarParts& parts, const BarReading& reading)
{
    const std::vector<BarPart> shown = shownParts(parts);
    const std::size_t count = std::min(shown.size(), mostBarFigures);
    std::vector<std::string> figures;
    figures.reserve(count);
    for (std::size_t at = 0; at < count; ++at)
        figures.push_back(figure(shown[at], reading));
    return figures;
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

std::string barAccessibilityHelp(std::string_view hotkeyLabel)
{
    return fmt::format("click toggles the ostrel panel; right-click opens the service menu; {} toggles from "
                       "anywhere",
        hotkeyLabel);
}

} // namespace ostrel
