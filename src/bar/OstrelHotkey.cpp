// SPDX-License-Identifier: Apache-2.0
#include "bar/OstrelHotkey.h"

#include "core/Text.h"

#include <array>
#include <bit>
#include <charconv>
#include <system_error>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

template <typename Number>
std::optional<Number> wholeDecimal(std::string_view text)
{
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

/// Keys that type nothing readable.
constexpr std::array<std::pair<std::uint32_t, std::string_view>, 19> keyNames { {
    { 49, "space" },
    { 48, "tab" },
    { 36, "return" },
    { 123, "←" },
    { 124, "→" },
    { 126, "↑" },
    { 125, "↓" },
    { 122, "f1" },
    { 120, "f2" },
    { 99, "f3" },
    { 118, "f4" },
    { 96, "f5" },
    { 97, "f6" },
    { 98, "f7" },
    { 100, "f8" },
    { 101, "f9" },
    { 109, "f10" },
    { 103, "f11" },
    { 111, "f12" },
} };

} // namespace

OstrelHotkey OstrelHotkey::fallback() { return { 46, option | command, "m" }; }

const std::array<OstrelHotkey, 4>& OstrelHotkey::canonical()
{
    static const std::array<OstrelHotkey, 4> choices { {
        { 46, option | command, "m" },
        { 46, control | option, "m" },
        { 46, option | shift, "m" },
        { 35, option | command, "p" },
    } };
    return choices;
}

std::optional<OstrelHotkey> OstrelHotkey::fromEvent(const platform::KeyDown& event)
{
    std::string character = name(event.keyCode, event.characters);
    if (character.empty())
        return std::nullopt;
    return OstrelHotkey { event.keyCode, event.modifierFlags & allModifiers, std::move(character) };
}

std::string OstrelHotkey::name(std::uint32_t keyCode, const std::optional<std::string>& characters)
{
    for (const auto& [known, keyName] : keyNames)
        if (known == keyCode)
            return std::string(keyName);
    const std::string typed = lowered(characters.value_or(""));
    const std::string_view first = firstSigns(typed, 1);
    // Control characters and the one that deletes can't be shown.
    const bool invisible
        = first.size() == 1 && (static_cast<unsigned char>(first[0]) < 32 || first[0] == 127);
    const bool readable = !first.empty() && !invisible && isValidUtf8(first);
    return readable ? std::string(first) : std::string();
}

std::optional<OstrelHotkey> OstrelHotkey::fromStorage(std::string_view storage)
{
    // Two splits at most, so that a key named ":" survives.
    const auto first = storage.find(':');
    const auto second = first == std::string_view::npos ? first : storage.find(':', first + 1);
    if (second == std::string_view::npos)
        return std::nullopt;
    const auto keyCode = wholeDecimal<std::uint32_t>(storage.substr(0, first));
    const auto modifiers = wholeDecimal<std::uint64_t>(storage.substr(first + 1, second - first - 1));
    const auto character = storage.substr(second + 1);
    if (!keyCode || !modifiers || character.empty())
        return std::nullopt;
    return OstrelHotkey { *keyCode, *modifiers, std::string(character) };
}

std::string OstrelHotkey::storage() const { return fmt::format("{}:{}:{}", keyCode, modifiers, character); }

std::string OstrelHotkey::display() const
{
    std::string label;
    if (modifiers & control)
        label += "⌃";
    if (modifiers & option)
        label += "⌥";
    if (modifiers & shift)
        label += "⇧";
    if (modifiers & command)
        label += "⌘";
    return label + lowered(character);
}

std::uint32_t OstrelHotkey::carbonModifiers() const
{
    return ((modifiers & command) ? 0x100U : 0U) | ((modifiers & shift) ? 0x200U : 0U)
        | ((modifiers & option) ? 0x800U : 0U) | ((modifiers & control) ? 0x1000U : 0U);
}

FamilyCombo OstrelHotkey::familyCombo() const { return { keyCode, carbonModifiers() }; }

std::optional<std::string> OstrelHotkey::conflict(const FamilyHotkeys::Holders& holders) const
{
    const std::uint64_t held = modifiers & allModifiers;
    if (held == 0)
        return "needs a modifier: hold ⌥ or ⌃";
    if (std::popcount(held) < 2)
        return "needs two modifiers, one alone belongs to the front app";
    if (auto taken = FamilyHotkeys::refusal(familyCombo(), holders))
        return taken;
    if ((held & (option | control)) == 0)
        return "needs ⌥ or ⌃, a plain command pair belongs to the front app";
    return std::nullopt;
}

} // namespace ostrel
