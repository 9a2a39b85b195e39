// SPDX-License-Identifier: Apache-2.0
#include "bar/FamilyHotkeys.h"

#include "core/Text.h"

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

namespace ostrel::FamilyHotkeys {

namespace {

/// The sibling's function in the reader; empty for one that has none.
const Reader::Read& readOf(std::string_view name, const Reader& reader)
{
    static const Reader::Read none;
    const std::array<std::pair<std::string_view, const Reader::Read*>, 5> reads { {
        { ostrel, &reader.ostrel },
        { pellamDial, &reader.pellamDial },
        { tessitLoop, &reader.tessitLoop },
        { ruvane, &reader.ruvane },
        { sillon, &reader.sillon },
    } };
    for (const auto& [known, read] : reads)
        if (known == name)
            return *read;
    return none;
}

std::string rowText(const Holder& row)
{
    std::vector<std::string> combos;
    for (const FamilyCombo& combo : row.combos)
        combos.push_back(fmt::format("{}/{}", combo.keyCode, combo.carbonModifiers));
    std::ranges::sort(combos);
    return fmt::format("{}={}", row.name, joined(combos, "+"));
}

} // namespace

const Holders& familyDefaults()
{
    static const Holders rows {
        { ostrel, { { 46, 2304 } } },
        { pellamDial, { { 8, 2304 } } },
        { tessitLoop, { { 37, 2304 } } },
        { vormelTrim, { { 0, 2304 }, { 0, 2560 } } },
        { ruvane, { { 7, 2304 } } },
        { sillon, { { 32, 2304 } } },
    };
    return rows;
}

const Holders& systemHeld()
{
    static const Holders rows {
        { "macOS screenshot", { { 20, 768 } } },
        { "macOS screenshot", { { 21, 768 } } },
        { "macOS screenshot", { { 23, 768 } } },
        { "macOS log out", { { 12, 768 } } },
        { "macOS lock screen", { { 12, 4352 } } },
        { "macOS full screen", { { 3, 4352 } } },
        { "macOS dictionary", { { 2, 4352 } } },
        { "macOS force quit", { { 53, 2304 } } },
        { "macOS finder search", { { 49, 2304 } } },
        { "macOS finder search", { { 49, 768 } } },
    };
    return rows;
}

std::string signature()
{
    std::vector<std::string> rows;
    for (const Holders* table : { &familyDefaults(), &systemHeld() })
        for (const Holder& row : *table)
            rows.push_back(rowText(row));
    return joined(rows, " ");
}

std::optional<Combos> tessitCombos(std::string_view word)
{
    static const std::array<std::pair<std::string_view, Combos>, 5> words { {
        { "option-command-l", { { 37, 2304 } } },
        { "control-option-l", { { 37, 6144 } } },
        { "option-command-r", { { 15, 2304 } } },
        { "option-command-k", { { 40, 2304 } } },
        { "off", {} },
    } };
    for (const auto& [known, combos] : words)
        if (known == word)
            return combos;
    return std::nullopt;
}

Holders holders(std::string_view excluded, const Reader& reader)
{
    Holders rows;
    for (const Holder& row : familyDefaults()) {
        if (row.name == excluded)
            continue;
        const Reader::Read& read = readOf(row.name, reader);
        const auto live = read ? read() : std::nullopt;
        rows.push_back({ row.name, live.value_or(row.combos) });
    }
    return rows;
}

std::optional<std::string> refusal(const FamilyCombo& combo, const Holders& held)
{
    for (const Holders* table : { &held, &systemHeld() })
        for (const Holder& row : *table)
            if (std::ranges::find(row.combos, combo) != row.combos.end())
                return fmt::format("taken by {}", row.name);
    return std::nullopt;
}

} // namespace ostrel::FamilyHotkeys
