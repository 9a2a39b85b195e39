// SPDX-License-Identifier: Apache-2.0
#include "core/Text.h"

#include <cmath>
#include <cstdlib>
#include <memory>

#include <fmt/format.h>
#include <utf8proc.h>

namespace ostrel {

std::int64_t rounded(double value)
{
    const double whole = std::round(value);
    constexpr double beyond = 9223372036854775808.0;
    if (!(whole >= -beyond && whole < beyond))
        return 0;
    return static_cast<std::int64_t>(whole);
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\n\v\f\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string upperCased(std::string_view text)
{
    std::string upper(text);
    for (char& letter : upper)
        if (letter >= 'a' && letter <= 'z')
            letter = static_cast<char>(letter - 'a' + 'A');
    return upper;
}

std::string lowered(std::string_view text)
{
    utf8proc_uint8_t* mapped = nullptr;
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    const auto lower = [](utf8proc_int32_t point, void*) { return utf8proc_tolower(point); };
    const auto length = utf8proc_map_custom(
        bytes, static_cast<utf8proc_ssize_t>(text.size()), &mapped, UTF8PROC_STABLE, lower, nullptr);
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(mapped, &std::free);
    if (length >= 0)
        return std::string(reinterpret_cast<const char*>(mapped), static_cast<std::size_t>(length));
    std::string ascii(text);
    for (char& letter : ascii)
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    return ascii;
}

bool isValidUtf8(std::string_view bytes)
{
    const auto* next = reinterpret_cast<const utf8proc_uint8_t*>(bytes.data());
    auto left = static_cast<utf8proc_ssize_t>(bytes.size());
    while (left > 0) {
        utf8proc_int32_t point = 0;
        const auto used = utf8proc_iterate(next, left, &point);
        if (used <= 0)
            return false;
        next += used;
        left -= used;
    }
    return true;
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
