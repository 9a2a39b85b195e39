// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/Maintenance.h"
#include "collector/SnapshotCycle.h"
#include "core/LifeToken.h"
#include "core/PanelBody.h"
#include "janitor/JanitorTab.h"
#include "platform/Alerts.h"
#include "platform/MainQueue.h"

#include <string>
#include <string_view>

namespace ostrel {

/// The processes tab's state, and the one way to stop a process from there. Main thread.
class Workloads {
public:
    /// All of it must outlive this.
    struct Services {
        platform::MainQueue& mainQueue;
        platform::Alerts& alerts;
        JanitorTab& janitor;
        Maintenance& maintenance; ///< its report tells how a stop ended
        SnapshotCycle& snapshots; ///< read again after a stop
    };

    explicit Workloads(const Services& services);

    /// Connects the panel, which must outlive this. Without one the filter only keeps state.
    void connect(PanelBody& body) { body_ = &body; }

    /// The key of the present filter. Not kept across starts.
    [[nodiscard]] const std::string& processFilter() const { return processFilter_; }
    /// Chooses a filter by the identifier of its button, the first one for an empty identifier, and draws.
    void selectProcessFilter(std::string_view identifier);

    /// What protects at this moment, to judge many processes.
    [[nodiscard]] ProtectionRules rules() const { return services_.janitor.protection().rules(); }

    /// Explains, in the next turn, why a protected process stays; lets the janitor look at any other one, ask
    /// and stop it. Nothing for what can't be a pid.
    void killProcess(const std::string& pid, const std::string& name, const std::string& cmd);

private:
    void explain(const std::string& name);

    Services services_;
    PanelBody* body_ = nullptr;
    std::string processFilter_;
    LifeToken life_;
};

} // namespace ostrel
