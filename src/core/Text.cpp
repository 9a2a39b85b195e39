// SPDX-License-Identifier: Apache-2.0
#include "core/Text.h"

#include <array>
#include <cmath>

#include <fmt/format.h>
#include <utf8proc.h>

namespace ostrel {

namespace {

/// What a text begins with: its code point, or -1 and one byte where that isn't valid UTF-8.
struct Sign {
    utf8proc_int32_t point = -1;
    std::size_t length = 1;
};

Sign firstSign(std::string_view text)
{
    if (static_cast<unsigned char>(text.front()) < 0x80)
        return { text.front(), 1 };
    utf8proc_int32_t point = -1;
    const auto used = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
        static_cast<utf8proc_ssize_t>(text.size()), &point);
    return used > 0 ? Sign { point, static_cast<std::size_t>(used) } : Sign {};
}

char asciiLowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

char asciiUppered(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

/// The text in another case, sign by sign.
template <typename Ascii, typename Wide>
std::string cased(std::string_view text, Ascii ascii, Wide wide)
{
    std::string other;
    other.reserve(text.size());
    while (!text.empty()) {
        const Sign sign = firstSign(text);
        std::array<utf8proc_uint8_t, 4> bytes {};
        if (sign.point < 0)
            other += text.front();
        else if (sign.point < 0x80)
            other += ascii(text.front());
        else
            other.append(reinterpret_cast<const char*>(bytes.data()),
                static_cast<std::size_t>(utf8proc_encode_char(wide(sign.point), bytes.data())));
        text.remove_prefix(sign.length);
    }
    return other;
}

/// Blanks beyond ASCII, as their bytes.
constexpr std::array<std::string_view, 19> wideBlanks { "\u0085", "\u00a0", "\u1680", "\u2000", "\u2001",
    "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008", "\u2009", "\u200a", "\u2028",
    "\u2029", "\u202f", "\u205f", "\u3000" };

/// How many bytes the blank takes that a text begins with or ends in; 0 without one.
std::size_t blankAt(std::string_view text, bool front)
{
    constexpr std::string_view blanks = " \t\n\v\f\r";
    if (text.empty())
        return 0;
    if (blanks.find(front ? text.front() : text.back()) != std::string_view::npos)
        return 1;
    for (const std::string_view blank : wideBlanks)
        if (front ? text.starts_with(blank) : text.ends_with(blank))
            return blank.size();
    return 0;
}

} // namespace

std::int64_t rounded(double value)
{
    const double whole = std::round(value);
    constexpr double beyond = 9223372036854775808.0;
    if (!(whole >= -beyond && whole < beyond))
        return 0;
    return static_cast<std::int64_t>(whole);
}

bool beginsWithBlank(std::string_view text) { return blankAt(text, true) != 0; }

bool endsInBlank(std::string_view text) { return blankAt(text, false) != 0; }

std::string_view trimmed(std::string_view text)
{
    while (const std::size_t blank = blankAt(text, true))
        text.remove_prefix(blank);
    while (const std::size_t blank = blankAt(text, false))
        text.remove_suffix(blank);
    return text;
}

std::string upperCased(std::string_view text) { return cased(text, asciiUppered, utf8proc_toupper); }

std::string lowered(std::string_view text) { return cased(text, asciiLowered, utf8proc_tolower); }

bool isValidUtf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        const Sign sign = firstSign(bytes);
        if (sign.point < 0)
            return false;
        bytes.remove_prefix(sign.length);
    }
    return true;
}

std::string_view firstSigns(std::string_view text, std::size_t most)
{
    std::size_t end = 0;
    for (std::size_t count = 0; count < most && end < text.size(); ++count)
        end += firstSign(text.substr(end)).length;
    return text.substr(0, end);
}

std::string_view lastSigns(std::string_view text, std::size_t most)
{
    const auto goesOn = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; };
    std::size_t begin = text.size();
    for (std::size_t count = 0; count < most && begin > 0; ++count)
        while (--begin > 0 && goesOn(text[begin])) { }
    return text.substr(begin);
}

std::string oneLine(std::string_view text)
{
    std::string line(text);
    for (char& c : line)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f')
            c = ' ';
    return line;
}

std::string fileUrl(std::string_view path)
{
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~/";
    std::string url = "file://";
    for (const char c : path)
        if (plain.find(c) != std::string_view::npos)
            url += c;
        else
            url += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    return url;
}

std::string joined(const std::vector<std::string>& pieces, std::string_view separator)
{
    return fmt::format("{}", fmt::join(pieces, separator));
}

std::string memLabel(std::int64_t mb)
{
    return mb >= 1024 ? fmt::format("{:.1f} gb", static_cast<double>(mb) / 1024) : fmt::format("{} mb", mb);
}

} // namespace ostrel
