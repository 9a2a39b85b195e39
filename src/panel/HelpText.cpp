// SPDX-License-Identifier: Apache-2.0
#include "panel/HelpText.h"

#include "core/OstrelMode.h"

#include <fmt/format.h>

namespace ostrel {

std::vector<std::string> helpRows()
{
    std::vector<std::string> rows { "panel keys", " " };
    for (const OstrelModeWords& words : ostrelModes())
        rows.push_back(fmt::format("{}    {}", index(words.mode) + 1, words.title));
    rows.insert(rows.end(),
        { " ", "esc  close panel", "⌘w   close panel", "⌥⌘m  toggle panel", "/    this help", " ",
            "esc or click to close" });
    return rows;
}

} // namespace ostrel
