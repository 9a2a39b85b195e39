// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AgentBudget.h"
#include "automations/AutomationsRegistry.h"
#include "automations/AutomationsText.h"
#include "core/LifeToken.h"
#include "core/PanelBody.h"
#include "platform/Alerts.h"
#include "platform/Workspace.h"

#include <functional>
#include <string>

namespace ostrel {

/// The automations tab, the agents' budget and the automations' section of the settings: their state and
/// their flows. The inventory is read at the first drawing, on a press and after an action, never on a timer;
/// nothing is changed without a confirmation. Main thread.
class AutomationsTab {
public:
    /// All of it must outlive the tab, and what background jobs use every one of those.
    struct Platform {
        platform::MainQueue& mainQueue;
        platform::GlobalQueue& globalQueue;
        platform::FileManager& files;
        const platform::Bundle& bundle;
        const platform::Clock& clock;
        platform::ChildProcess& children;
        platform::Alerts& alerts;
        platform::Workspace& workspace;
    };

    explicit AutomationsTab(const Platform& platform);

    /// Connects the panel, which must outlive this. Without one the flows only keep state.
    void connect(PanelBody& body) { body_ = &body; }
    /// This process is a self-test, in which a made-up inventory may stand in for the script.
    void setSelfTest(bool selfTest) { registry_.setSelfTest(selfTest); }

    /// What to draw in the tab, and in the budget's block. The first call of either starts the first load, so
    /// it is made by a drawing and by nothing else.
    [[nodiscard]] AutomationsBody body();
    [[nodiscard]] AgentBudget agentOverview();
    /// What to draw in the settings; starts no load.
    [[nodiscard]] AutomationsSection settingsSection() const;

    [[nodiscard]] const AutomationsState& state() const { return state_; }
    [[nodiscard]] const AutomationsRegistry& registry() const { return registry_; }

    // Presses.

    /// Asks every scheduler again; nothing while busy.
    void refresh();
    /// An empty key chooses all lanes.
    void chooseLane(const std::string& lane);
    void chooseState(AutomationStateFilter filter);
    void search(const std::string& query);
    void previousPage();
    void nextPage();
    /// Opens a row, whose journal is read then, or closes it.
    void toggleRow(const Automation& item);
    /// Asks, in the next turn, and acts after a confirmation. Dropped while busy, and while another question
    /// stands.
    void confirm(const std::string& op, const Automation& item);
    /// Opens the folder of the receipts in the desktop's file manager.
    void openReceipts();

private:
    void loadOnce();
    void ask(const std::string& op, const Automation& item);
    void acted(const AutomationActionResult& result);
    void say(std::string lastAction);
    void showPage(std::size_t page);
    /// Draws the tabs that show the inventory, if one of them is there.
    void rebuild();
    /// The same as a completion that this may not outlive.
    [[nodiscard]] std::function<void()> rebuilding();

    Platform platform_;
    AutomationsRegistry registry_;
    AutomationsState state_;
    PanelBody* body_ = nullptr;
    bool asking_ = false; ///< a question stands, or will in the next turn
    LifeToken life_;
};

} // namespace ostrel
