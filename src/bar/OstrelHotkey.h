// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// A key with its modifiers, as it is stored and shown.
struct OstrelHotkey {
    /// The four modifiers that count, in the encoding of key events.
    static constexpr std::uint64_t shift = 0x20000;
    static constexpr std::uint64_t control = 0x40000;
    static constexpr std::uint64_t option = 0x80000;
    static constexpr std::uint64_t command = 0x100000;

    std::uint32_t keyCode = 0; ///< virtual key code
    std::uint64_t modifiers = 0;
    std::string character; ///< the key's name

    /// The combination of somebody who has chosen none: option + command + m.
    [[nodiscard]] static OstrelHotkey fallback();
    /// Reads the stored form; nothing when it is malformed.
    [[nodiscard]] static std::optional<OstrelHotkey> fromStorage(std::string_view storage);

    /// "{keyCode}:{modifiers}:{character}", the numbers in decimal.
    [[nodiscard]] std::string storage() const;
    /// The label: the modifiers' glyphs and the key, for instance "⌥⌘m".
    [[nodiscard]] std::string display() const;

    bool operator==(const OstrelHotkey&) const = default;
};

} // namespace ostrel
