// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationsTab.h"
#include "core/Json.h"
#include "core/Text.h"

#include "support/FakeAlerts.h"
#include "support/FakeMachine.h"
#include "support/FakePanel.h"
#include "support/FakeWorkspace.h"

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Rows of an inventory, by the keys that a test changes; all can be run, switched and planned.
inline ostrel::json::Value jobJson(const std::string& lane, const std::string& id,
    const std::map<std::string, ostrel::json::Value>& more = {})
{
    ostrel::json::Value row { { "lane", lane }, { "lane_title", lane + "s" }, { "id", id },
        { "title", "Job " + id }, { "host", "box" }, { "schedule", "daily" }, { "state", "enabled" },
        { "active", true }, { "can_run", true }, { "toggles", true }, { "observation", "observed" },
        { "target", "t=" + id } };
    for (const auto& [key, value] : more)
        row[key] = value;
    return row;
}

/// An inventory of these rows, as the bridge prints it.
inline std::string inventoryJson(
    const std::vector<ostrel::json::Value>& rows, const std::map<std::string, ostrel::json::Value>& more = {})
{
    ostrel::json::Value answer { { "ok", true }, { "read_at", "2026-11-25T08:00:00+00:00" },
        { "generated_at", "2026-11-25T07:55:00+00:00" },
        { "counts", { { "total", rows.size() }, { "active", 1 } } }, { "automations", rows } };
    for (const auto& [key, value] : more)
        answer[key] = value;
    return ostrel::json::dump(answer);
}

/// The automations beside an open automations tab, whose bridge answers what the test prepared.
struct AutomationsBench : FakeMachine {
    using Lines = std::vector<std::string>;

    AutomationsBench()
    {
        bundle.resources.emplace("collectors/automations_bridge.py", "/opt/bridge.py");
        panel.tab = ostrel::OstrelMode::automations;
        tab->connect(panel);
    }

    /// Lets everything come to its end.
    void settle()
    {
        do
            deliver();
        while (!globalQueue.waiting.empty());
    }

    /// The tab's first drawing, with the inventory that came of it.
    void open(const std::string& inventory)
    {
        answer(inventory);
        (void)tab->body();
        settle();
        forget();
    }

    /// The arguments behind the script's path, a run a line, of each run since the last call.
    Lines runs()
    {
        Lines lines;
        for (const auto& request : std::exchange(children.requests, {}))
            lines.push_back(ostrel::joined({ request.arguments.begin() + 1, request.arguments.end() }, "|"));
        return lines;
    }
    /// How often the panel was drawn since the last call.
    std::size_t drawn() { return std::exchange(panel.calls, {}).size(); }
    void forget()
    {
        (void)runs();
        (void)drawn();
    }

    [[nodiscard]] const std::string& lastAction() const { return tab->state().lastAction; }
    [[nodiscard]] const ostrel::Automation& item(std::size_t at = 0) const
    {
        return tab->registry().snapshot().items.at(at);
    }

    FakeAlerts alerts;
    FakeWorkspace workspace;
    FakePanel panel;
    std::optional<ostrel::AutomationsTab> tab { std::in_place,
        ostrel::AutomationsTab::Platform {
            time, globalQueue, files, bundle, time, children, alerts, workspace } };
};
