// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace platform {

/// The whole number under a name in the settings that an X desktop hands to its programs, as the bytes of the
/// property _XSETTINGS_SETTINGS. Nothing when the name is absent or isn't a number, and when the bytes end
/// early or aren't such settings anywhere.
[[nodiscard]] std::optional<std::int32_t> xsettingsInteger(
    std::span<const std::uint8_t> bytes, std::string_view name);

} // namespace platform
