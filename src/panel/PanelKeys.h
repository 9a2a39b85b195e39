// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/OstrelMode.h"

#include <optional>
#include <string_view>

namespace ostrel {

/// A key as it reaches the panel.
struct PanelKey {
    std::string_view characters; ///< what it types without modifiers but shift, in lower case
    bool escape = false;
    bool control = false;
    bool option = false;
    bool command = false;
    bool inTextField = false; ///< a text field has the keyboard and left the key over
};

/// What a key does in the panel.
struct PanelKeyAction {
    enum class Kind {
        none, ///< the view's own handling
        escape, ///< away with the help overlay, or else with the panel
        close,
        help, ///< the overlay comes or goes
        tab,
    };

    Kind kind = Kind::none;
    std::string_view reason; ///< escape and close: what is kept as the reason
    OstrelMode mode = OstrelMode::overview; ///< tab

    bool operator==(const PanelKeyAction&) const = default;
};

[[nodiscard]] PanelKeyAction panelKeyAction(const PanelKey& key);

} // namespace ostrel
