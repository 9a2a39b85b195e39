// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// The nearest integer, halves away from zero; 0 for a value that isn't finite or doesn't fit.
[[nodiscard]] std::int64_t rounded(double value);

/// Without blanks and line breaks at both ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// Lower case of any script. Bytes that aren't valid UTF-8 stay as they are, and only ASCII is lowered then.
[[nodiscard]] std::string lowered(std::string_view text);

/// Upper case of ASCII, of which our own words are; all else stays as it is.
[[nodiscard]] std::string upperCased(std::string_view text);

/// Whether the bytes are well-formed UTF-8.
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

/// The pieces with `separator` between them.
[[nodiscard]] std::string joined(const std::vector<std::string>& pieces, std::string_view separator);

/// A size in MiB in short: "%.1f gb" from 1024 up, else "{mb} mb".
[[nodiscard]] std::string memLabel(std::int64_t mb);

} // namespace ostrel
