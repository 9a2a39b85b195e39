// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// The nearest integer, halves away from zero; 0 for a value that isn't finite or doesn't fit.
[[nodiscard]] std::int64_t rounded(double value);

/// Whether the text begins with, or ends in, a blank or a line break of any script; it isn't empty.
[[nodiscard]] bool beginsWithBlank(std::string_view text);
[[nodiscard]] bool endsInBlank(std::string_view text);

/// Without blanks and line breaks of any script at both ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// Lower case of any script, sign by sign. Bytes that aren't valid UTF-8 stay as they are.
[[nodiscard]] std::string lowered(std::string_view text);

/// Upper case in the same way.
[[nodiscard]] std::string upperCased(std::string_view text);

/// Whether the bytes are well-formed UTF-8.
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

/// The first signs of a text, `most` of them; a byte that isn't valid UTF-8 counts as one.
[[nodiscard]] std::string_view firstSigns(std::string_view text, std::size_t most);

/// The last signs of a text, `most` of them; the text is well-formed UTF-8.
[[nodiscard]] std::string_view lastSigns(std::string_view text, std::size_t most);

/// With a blank in the place of everything that would break the line, as in a name that holds line ends.
[[nodiscard]] std::string oneLine(std::string_view text);

/// The address of a file or folder, for the desktop: every byte that could mean something else is escaped.
[[nodiscard]] std::string fileUrl(std::string_view path);

/// The pieces with `separator` between them.
[[nodiscard]] std::string joined(const std::vector<std::string>& pieces, std::string_view separator);

/// A size in MiB in short: "%.1f gb" from 1024 up, else "{mb} mb".
[[nodiscard]] std::string memLabel(std::int64_t mb);

} // namespace ostrel
