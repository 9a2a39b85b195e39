// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLMiniAppTokens.h"

#include <charconv>
#include <string>
#include <system_error>

namespace ostrel::ZOLMiniAppTokens {

namespace {

void removeAll(std::string& text, std::string_view unit)
{
    for (auto at = text.find(unit); at != std::string::npos; at = text.find(unit, at))
        text.erase(at, unit.size());
}

} // namespace

std::optional<double> number(std::string_view value)
{
    std::string text(value);
    removeAll(text, "px");
    removeAll(text, "ms");
    const char* const end = text.data() + text.size();
    // from_chars takes a minus but no plus.
    const char* const start = text.data() + (text.starts_with('+') && !text.starts_with("+-") ? 1 : 0);
    double parsed = 0;
    const auto [stop, error] = std::from_chars(start, end, parsed);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return parsed;
}

double seconds(std::string_view value, bool reducedMotion)
{
    if (reducedMotion)
        return 0;
    return number(value).value_or(0) / 1000.0;
}

} // namespace ostrel::ZOLMiniAppTokens
