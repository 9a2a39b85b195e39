// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Bytes as base64 with padding.
[[nodiscard]] std::string toBase64(std::string_view bytes);

/// The bytes again; nothing when the text isn't base64.
[[nodiscard]] std::optional<std::string> fromBase64(std::string_view text);

} // namespace platform
