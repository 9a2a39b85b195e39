// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string_view>

namespace ostrel::ZOLPinPolicy {

/// Panels close on a click outside unless the user pinned them.
inline constexpr bool pinDefault = false;
inline constexpr std::string_view migrationKey = "zol.shell.pin-migrated";
inline constexpr std::string_view tooltip = "pin: the panel stays open on a click outside";
/// What assistive technology finds the pin button by.
inline constexpr std::string_view pinButtonIdentifier = "pin-panel";

/// The mark on the pin button.
[[nodiscard]] std::string_view glyph(bool pinned);
/// What pressing the button does.
[[nodiscard]] std::string_view accessibilityDescription(bool pinned);

/// Whether a click outside closes the panel.
[[nodiscard]] bool closesOnOutsideClick(bool pinned, bool shown);

/// What to do with a stored pin at start.
struct PinResolution {
    bool pinned = false;
    bool writePinned = false;
    bool markMigrated = false;

    bool operator==(const PinResolution&) const = default;
};

/// Turns an old pin off once: panels used to be pinned without anybody having asked. After that the user's
/// choice stands.
[[nodiscard]] PinResolution resolve(std::optional<bool> stored, bool migrated);

} // namespace ostrel::ZOLPinPolicy
