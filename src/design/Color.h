// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace ostrel {

/// A colour in sRGB, each channel from 0 to 1 with straight alpha.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    constexpr bool operator==(const Color&) const = default;

    /// The same colour with its alpha multiplied.
    [[nodiscard]] constexpr Color faded(double factor) const { return { red, green, blue, alpha * factor }; }

    /// This colour moved towards `other` by `fraction`, from 0 to 1, channel by channel.
    [[nodiscard]] constexpr Color blended(double fraction, const Color& other) const
    {
        const auto mix = [fraction](double from, double to) { return from + (to - from) * fraction; };
        return { mix(red, other.red), mix(green, other.green), mix(blue, other.blue),
            mix(alpha, other.alpha) };
    }
};

/// The value of a hexadecimal digit of either case; absent for any other character.
[[nodiscard]] constexpr std::optional<int> hexDigit(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    return std::nullopt;
}

/// What a text that is no colour reads as.
inline constexpr Color unreadableColor { 0x20 / 255.0, 0x21 / 255.0, 0x24 / 255.0, 1 };

/// The colour of a style sheet's "#rrggbb" or "#rrggbbaa", with or without the "#", blanks around it ignored;
/// `unreadableColor` for anything else.
[[nodiscard]] constexpr Color zolHex(std::string_view text)
{
    constexpr std::string_view blanks = " \t";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return unreadableColor;
    text = text.substr(first, text.find_last_not_of(blanks) - first + 1);
    if (text.starts_with('#'))
        text.remove_prefix(1);
    if (text.size() != 6 && text.size() != 8)
        return unreadableColor;
    std::array<double, 4> channels { 0, 0, 0, 1 };
    for (std::size_t at = 0; at < text.size(); at += 2) {
        const auto high = hexDigit(text[at]);
        const auto low = hexDigit(text[at + 1]);
        if (!high || !low)
            return unreadableColor;
        channels[at / 2] = (*high * 16 + *low) / 255.0;
    }
    return { channels[0], channels[1], channels[2], channels[3] };
}

} // namespace ostrel
