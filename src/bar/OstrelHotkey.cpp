// SPDX-License-Identifier: Apache-2.0
#include "bar/OstrelHotkey.h"

#include "core/Text.h"

#include <charconv>
#include <system_error>

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

} // namespace

OstrelHotkey OstrelHotkey::fallback() { return { 46, option | command, "m" }; }

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

} // namespace ostrel
