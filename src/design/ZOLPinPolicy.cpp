// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLPinPolicy.h"

namespace ostrel::ZOLPinPolicy {

std::string_view glyph(bool pinned) { return pinned ? "◉" : "○"; }

std::string_view accessibilityDescription(bool pinned) { return pinned ? "unpin panel" : "pin panel open"; }

bool closesOnOutsideClick(bool pinned, bool shown) { return shown && !pinned; }

PinResolution resolve(std::optional<bool> stored, bool migrated)
{
    if (!migrated)
        return { .pinned = false, .writePinned = true, .markMigrated = true };
    return { .pinned = stored.value_or(false) };
}

} // namespace ostrel::ZOLPinPolicy
