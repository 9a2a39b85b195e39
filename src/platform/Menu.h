// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"

#include <optional>
#include <string>
#include <vector>

namespace platform {

/// One row of a menu. A row with neither an action nor a submenu is shown grey and can't be chosen.
struct MenuItem {
    std::string title; ///< shown as it is; no character of it marks a mnemonic
    std::string toolTip;
    std::optional<bool> checked; ///< absent: a row without a check mark
    bool separator = false; ///< a line between rows; everything else is ignored
    Job action; ///< runs on the main thread in a turn of its own
    std::vector<MenuItem> submenu;
};

/// The rows of a menu, top to bottom.
using Menu = std::vector<MenuItem>;

} // namespace platform
