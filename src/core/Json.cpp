// SPDX-License-Identifier: Apache-2.0
#include "core/Json.h"

#include <cmath>
#include <cstddef>

namespace ostrel::json {

namespace {

constexpr std::size_t longestText = std::size_t { 64 } * 1024 * 1024;
constexpr int deepestNesting = 128;

template <typename T>
T orElse(const std::optional<T>& value, T fallback)
{
    return value ? *value : fallback;
}

/// Whether a text nests deeper than allowed: printing, comparing and other walks over a value recurse. Told
/// before parsing, since a watching callback makes the library walk over all earlier neighbours at the end of
/// each object and array: hours for a hostile text.
bool nestsTooDeep(std::string_view text)
{
    int depth = 0;
    bool inText = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (inText && c == '\\')
            ++at;
        else if (c == '"')
            inText = !inText;
        else if (inText)
            continue;
        else if ((c == '[' || c == '{') && ++depth > deepestNesting)
            return true;
        else if (c == ']' || c == '}')
            --depth;
    }
    return false;
}

} // namespace

std::optional<Value> parse(std::string_view text)
{
    // The library takes a zero byte for the end of the text and would accept whatever follows it.
    if (text.size() > longestText || text.find('\0') != std::string_view::npos)
        return std::nullopt;
    if (nestsTooDeep(text))
        return std::nullopt;
    Value value = Value::parse(text, nullptr, /*allow_exceptions=*/false);
    if (value.is_discarded())
        return std::nullopt;
    return value;
}

std::optional<Value> parseObject(std::string_view text)
{
    auto value = parse(text);
    return value && value->is_object() ? value : std::nullopt;
}

std::string dump(const Value& value) { return value.dump(-1, ' ', false, Value::error_handler_t::replace); }

const Value* member(const Value& object, std::string_view key)
{
    if (!object.is_object())
        return nullptr;
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

std::optional<std::string> asText(const Value& value)
{
    if (!value.is_string())
        return std::nullopt;
    return value.get_ref<const std::string&>();
}

std::optional<double> asNumber(const Value& value)
{
    if (!value.is_number())
        return std::nullopt;
    return value.get<double>();
}

std::optional<std::int64_t> asInteger(const Value& value)
{
    if (value.is_number_float() && std::trunc(value.get<double>()) != value.get<double>())
        return std::nullopt;
    return asTruncated(value);
}

std::optional<bool> asBoolean(const Value& value)
{
    if (!value.is_boolean())
        return std::nullopt;
    return value.get<bool>();
}

std::optional<std::int64_t> asTruncated(const Value& value)
{
    if (value.is_number_unsigned()) {
        const auto whole = value.get<std::uint64_t>();
        if (whole > static_cast<std::uint64_t>(INT64_MAX))
            return std::nullopt;
        return static_cast<std::int64_t>(whole);
    }
    if (value.is_number_integer())
        return value.get<std::int64_t>();
    if (!value.is_number_float())
        return std::nullopt;
    const double real = std::trunc(value.get<double>());
    // 2^63 is exact as a double and the first value that doesn't fit; NaN fails both comparisons.
    constexpr double beyond = 9223372036854775808.0;
    if (!(real >= -beyond && real < beyond))
        return std::nullopt;
    return static_cast<std::int64_t>(real);
}

std::optional<std::string> text(const Value& object, std::string_view key)
{
    const Value* found = member(object, key);
    return found ? asText(*found) : std::nullopt;
}

std::optional<double> number(const Value& object, std::string_view key)
{
    const Value* found = member(object, key);
    return found ? asNumber(*found) : std::nullopt;
}

std::optional<std::int64_t> integer(const Value& object, std::string_view key)
{
    const Value* found = member(object, key);
    return found ? asInteger(*found) : std::nullopt;
}

std::optional<bool> boolean(const Value& object, std::string_view key)
{
    const Value* found = member(object, key);
    return found ? asBoolean(*found) : std::nullopt;
}

const Value* object(const Value& object, std::string_view key)
{
    const Value* found = member(object, key);
    return found && found->is_object() ? found : nullptr;
}

const Value* array(const Value& object, std::string_view key)
{
    const Value* found = member(object, key);
    return found && found->is_array() ? found : nullptr;
}

std::string textOr(const Value& object, std::string_view key, std::string_view fallback)
{
    return orElse(text(object, key), std::string(fallback));
}

double numberOr(const Value& object, std::string_view key, double fallback)
{
    return orElse(number(object, key), fallback);
}

std::int64_t integerOr(const Value& object, std::string_view key, std::int64_t fallback)
{
    return orElse(integer(object, key), fallback);
}

std::string printed(const Value& object, std::string_view key, std::string_view fallback)
{
    const Value* found = member(object, key);
    if (!found)
        return std::string(fallback);
    return asText(*found).value_or(dump(*found));
}

} // namespace ostrel::json
