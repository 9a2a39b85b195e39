// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/FamilyHotkeys.h"
#include "platform/KeyEvents.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// A key with its modifiers, as it is stored and shown.
struct OstrelHotkey {
    /// The four modifiers that count, in the encoding of key events.
    static constexpr std::uint64_t shift = platform::ModifierFlag::shift;
    static constexpr std::uint64_t control = platform::ModifierFlag::control;
    static constexpr std::uint64_t option = platform::ModifierFlag::option;
    static constexpr std::uint64_t command = platform::ModifierFlag::command;
    static constexpr std::uint64_t allModifiers = shift | control | option | command;

    /// This program's row among the family's.
    static constexpr std::string_view owner = FamilyHotkeys::ostrel;

    std::uint32_t keyCode = 0; ///< virtual key code
    std::uint64_t modifiers = 0;
    std::string character; ///< the key's name

    /// The combination of somebody who has chosen none: option + command + m.
    [[nodiscard]] static OstrelHotkey fallback();
    /// Those that the settings offer with one press.
    [[nodiscard]] static const std::array<OstrelHotkey, 4>& canonical();

    /// From a key event. Nothing for a key without a name.
    [[nodiscard]] static std::optional<OstrelHotkey> fromEvent(const platform::KeyDown& event);
    /// Reads the stored form; nothing when it is malformed.
    [[nodiscard]] static std::optional<OstrelHotkey> fromStorage(std::string_view storage);

    /// What a key is called: the name of one that types nothing readable, else the first sign that it types,
    /// in lower case; empty without either.
    [[nodiscard]] static std::string name(
        std::uint32_t keyCode, const std::optional<std::string>& characters);
    /// The key that ends a recording: escape.
    [[nodiscard]] static bool isCancel(std::uint32_t keyCode) { return keyCode == 53; }
    /// The keys that clear the hotkey: delete and forward delete.
    [[nodiscard]] static bool isClear(std::uint32_t keyCode) { return keyCode == 51 || keyCode == 117; }

    /// "{keyCode}:{modifiers}:{character}", the numbers in decimal.
    [[nodiscard]] std::string storage() const;
    /// The label: the modifiers' glyphs and the key, for instance "⌥⌘m".
    [[nodiscard]] std::string display() const;
    [[nodiscard]] std::uint32_t carbonModifiers() const;
    [[nodiscard]] FamilyCombo familyCombo() const;
    /// Why the combination can't be taken beside these holders; nothing when it can.
    [[nodiscard]] std::optional<std::string> conflict(const FamilyHotkeys::Holders& holders) const;

    bool operator==(const OstrelHotkey&) const = default;
};

} // namespace ostrel
