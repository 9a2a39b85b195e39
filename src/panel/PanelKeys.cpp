// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelKeys.h"

#include <cstddef>

namespace ostrel {

PanelKeyAction panelKeyAction(const PanelKey& key)
{
    using Kind = PanelKeyAction::Kind;
    if (key.escape)
        return { Kind::escape, key.inTextField ? "esc-field" : "esc" };
    // All else that is typed into a field is the field's own.
    if (key.inTextField)
        return {};
    if (key.characters == "w" && (key.command || key.control))
        return { Kind::close, "cmd-w" };
    if (key.characters == "/" || key.characters == "?")
        return { Kind::help, {} };
    const bool chord = key.command || key.option || key.control;
    if (!chord && key.characters.size() == 1 && key.characters[0] >= '1' && key.characters[0] <= '9')
        return { Kind::tab, {}, ostrelModes()[static_cast<std::size_t>(key.characters[0] - '1')].mode };
    return {};
}

} // namespace ostrel
