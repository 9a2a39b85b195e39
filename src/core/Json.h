// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace ostrel::json {

/// A parsed JSON value. When a key stands twice in an object, the last one counts.
using Value = nlohmann::json;

/// Parses one whole JSON text. Nothing when it isn't JSON, isn't valid UTF-8, is nested deeper than 128
/// levels, or is longer than 64 MiB. Never throws.
[[nodiscard]] std::optional<Value> parse(std::string_view text);

/// The same, and nothing as well when the top level isn't an object.
[[nodiscard]] std::optional<Value> parseObject(std::string_view text);

/// One line of JSON; bytes that aren't valid UTF-8 become U+FFFD. Never throws.
[[nodiscard]] std::string dump(const Value& value);

/// The member under `key`; null when `object` isn't an object or has no such member. Lives as long as
/// `object`.
[[nodiscard]] const Value* member(const Value& object, std::string_view key);

/// A JSON string only.
[[nodiscard]] std::optional<std::string> asText(const Value& value);
/// Any JSON number; true and false are none.
[[nodiscard]] std::optional<double> asNumber(const Value& value);
/// A JSON number with no fractional part that fits 64 bits: 12 and 12.0 are, 12.5 and true aren't.
[[nodiscard]] std::optional<std::int64_t> asInteger(const Value& value);
/// true or false only.
[[nodiscard]] std::optional<bool> asBoolean(const Value& value);
/// An integer, or else a number cut toward zero; nothing beyond 64 bits.
[[nodiscard]] std::optional<std::int64_t> asTruncated(const Value& value);

/// The same by key, nothing when the key is absent or of another type.
[[nodiscard]] std::optional<std::string> text(const Value& object, std::string_view key);
[[nodiscard]] std::optional<double> number(const Value& object, std::string_view key);
[[nodiscard]] std::optional<std::int64_t> integer(const Value& object, std::string_view key);
[[nodiscard]] std::optional<bool> boolean(const Value& object, std::string_view key);
/// The member when it is an object (an array), else null.
[[nodiscard]] const Value* object(const Value& object, std::string_view key);
[[nodiscard]] const Value* array(const Value& object, std::string_view key);

/// The same by key with the value that stands for an absent or wrongly typed one.
[[nodiscard]] std::string textOr(const Value& object, std::string_view key, std::string_view fallback);
[[nodiscard]] double numberOr(const Value& object, std::string_view key, double fallback);
[[nodiscard]] std::int64_t integerOr(const Value& object, std::string_view key, std::int64_t fallback);

/// The member as it arrived, of whatever type: a text as it is, all else as JSON.
[[nodiscard]] std::string printed(const Value& object, std::string_view key, std::string_view fallback);

} // namespace ostrel::json
