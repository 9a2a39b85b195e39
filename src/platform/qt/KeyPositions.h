// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

namespace platform {

/// Keys by their place on the keyboard. A virtual key code names a place, and so does the number that an X
/// display gives a key: the kernel's number and 8. What stands on the key doesn't matter, so a combination
/// stays where the fingers know it when the user changes the layout.

/// The display's number of a place; nothing for one that no keyboard here has.
[[nodiscard]] std::optional<std::uint8_t> xKeyOf(std::uint32_t keyCode);
/// The place of the display's number; nothing for keys beyond the table, and for modifiers.
[[nodiscard]] std::optional<std::uint32_t> keyCodeOf(std::uint32_t xKey);

} // namespace platform
