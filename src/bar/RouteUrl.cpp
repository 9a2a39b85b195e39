// SPDX-License-Identifier: Apache-2.0
#include "bar/RouteUrl.h"

#include "core/Text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace ostrel {

namespace {

constexpr std::string_view scheme = "ostrel";
constexpr std::string_view digits = "0123456789";
/// RFC 3986, 2.2 and 2.3, beside letters and digits; with the sign of an escape.
constexpr std::string_view punctuation = "-._~:/?#[]@!$&'()*+,;=%";
constexpr std::array<std::string_view, 4> affirmations { "1", "true", "yes", "on" };

/// An escape is a percent sign and two hexadecimal digits.
constexpr std::size_t escapeDigits = 2;
constexpr int hexadecimal = 16;

bool isAllowed(char letter)
{
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z')
        || digits.find(letter) != std::string_view::npos
        || punctuation.find(letter) != std::string_view::npos;
}

/// The byte that the digits behind a percent sign stand for; nothing where they are no such digits.
std::optional<char> escapedByte(std::string_view behind)
{
    const auto code = behind.substr(0, escapeDigits);
    unsigned char byte = 0;
    const auto [end, error] = std::from_chars(code.data(), code.data() + code.size(), byte, hexadecimal);
    if (error != std::errc() || end != code.data() + escapeDigits)
        return std::nullopt;
    return static_cast<char>(byte);
}

/// Whether the text has only what an address may have.
bool isSound(std::string_view text)
{
    if (text.size() > longestRouteUrl)
        return false;
    for (std::size_t at = 0; at < text.size(); ++at)
        if (!isAllowed(text[at]) || (text[at] == '%' && !escapedByte(text.substr(at + 1))))
            return false;
    return true;
}

/// The bytes that a piece of a sound address stands for. A plus sign stays one.
std::string unescaped(std::string_view text)
{
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = text[at] == '%' ? escapedByte(text.substr(at + 1)) : std::nullopt;
        bytes += byte.value_or(text[at]);
        at += byte ? escapeDigits : 0;
    }
    return bytes;
}

/// The text up to the mark, which the rest then begins behind; all of it where there is no mark.
std::string_view takeUntil(std::string_view& rest, char mark)
{
    const auto end = rest.find(mark);
    const auto taken = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    return taken;
}

/// The host of "user@host:port", still escaped; nothing where the authority is malformed.
std::optional<std::string_view> hostOf(std::string_view authority)
{
    authority = authority.substr(authority.rfind('@') + 1);
    std::string_view behind;
    std::string_view host;
    if (authority.starts_with('[')) {
        const auto end = authority.find(']');
        if (end == std::string_view::npos)
            return std::nullopt;
        host = authority.substr(1, end - 1);
        behind = authority.substr(end + 1);
        if (!behind.empty() && behind.front() != ':')
            return std::nullopt;
    } else {
        host = authority.substr(0, authority.find(':'));
        behind = authority.substr(host.size());
    }
    if (host.find_first_of("[]") != std::string_view::npos
        || behind.find_first_not_of(digits, 1) != std::string_view::npos)
        return std::nullopt;
    return host;
}

/// What stands behind the "=" of the first item for whose name the test holds; nothing without such an item,
/// and where that has no "=".
template <typename Test>
std::optional<std::string> itemValue(std::string_view query, Test holds)
{
    while (!query.empty()) {
        const std::string_view item = takeUntil(query, '&');
        const auto equals = item.find('=');
        if (!holds(unescaped(item.substr(0, equals))))
            continue;
        if (equals == std::string_view::npos)
            break;
        return unescaped(item.substr(equals + 1));
    }
    return std::nullopt;
}

} // namespace

std::optional<RouteRequest> parseRouteUrl(std::string_view text)
{
    const auto colon = text.find(':');
    if (!isSound(text) || colon == std::string_view::npos || lowered(text.substr(0, colon)) != scheme)
        return std::nullopt;
    std::string_view fragment = text.substr(colon + 1);
    std::string_view query = takeUntil(fragment, '#');
    std::string_view path = takeUntil(query, '?');
    std::optional<std::string_view> host = "";
    if (path.starts_with("//")) {
        path.remove_prefix(2);
        host = hostOf(takeUntil(path, '/'));
    }
    if (!host)
        return std::nullopt;
    const auto command = host->empty()
        ? itemValue(query, [](const std::string& name) { return name == "command"; }).value_or("show")
        : unescaped(*host);
    const auto testbed = itemValue(query, [](const std::string& name) { return lowered(name) == "testbed"; });
    return RouteRequest { .command = lowered(command),
        .testbed = std::ranges::find(affirmations, lowered(testbed.value_or(""))) != affirmations.end() };
}

} // namespace ostrel
