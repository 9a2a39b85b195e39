// SPDX-License-Identifier: Apache-2.0
#include "core/OstrelMode.h"

namespace ostrel {

const std::array<OstrelModeWords, ostrelModeCount>& ostrelModes()
{
    using enum OstrelMode;
    static constexpr std::array<OstrelModeWords, ostrelModeCount> table { {
        { overview, "dashboard", "pressure, swap and cpu at a glance with the history" },
        { system, "system", "memory, swap, load and the os pressure reading" },
        { processes, "processes", "workloads by memory or cpu, agent and mcp processes" },
        { sessions, "agents", "agent sessions and what each one holds" },
        { diagnosis, "insights", "insights and the local analyst" },
        { cleanup, "cleanup", "previews of what can be freed, each with a receipt" },
        { automations, "automations", "every scheduler lane, its rhythm and its last result" },
        { server, "server", "remote capacity and the tasks you send there" },
        { settings, "settings", "menu bar, theme, hotkey, refresh and motion" },
    } };
    return table;
}

} // namespace ostrel
