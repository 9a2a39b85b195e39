// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// The modifiers of a key event.
struct ModifierFlag {
    static constexpr std::uint64_t shift = 0x20000;
    static constexpr std::uint64_t control = 0x40000;
    static constexpr std::uint64_t option = 0x80000; ///< alt
    static constexpr std::uint64_t command = 0x100000; ///< super
};

/// A key that went down in one of the program's own windows.
struct KeyDown {
    std::uint32_t keyCode = 0; ///< virtual key code: a place on the keyboard, whatever stands on it
    std::uint64_t modifierFlags = 0;
    /// What it types without modifiers but shift; nothing where it types nothing.
    std::optional<std::string> characters = {};
};

} // namespace platform
