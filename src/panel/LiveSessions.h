// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "core/LifeToken.h"
#include "core/PanelBody.h"
#include "panel/SessionsText.h"
#include "platform/Alerts.h"
#include "platform/MainQueue.h"
#include "platform/Pasteboard.h"

#include <cstddef>

namespace ostrel {

/// The state of the agents tab, and what its presses do: turn the page of the live processes, and tell what
/// is known of one. Main thread.
class LiveSessions {
public:
    /// All of it must outlive this.
    struct Services {
        platform::MainQueue& mainQueue;
        platform::Alerts& alerts;
        platform::Pasteboard& pasteboard;
    };

    explicit LiveSessions(const Services& services)
        : services_(services)
    {
    }

    /// Connects the panel, which must outlive this. Without one the page only keeps state.
    void connect(PanelBody& body) { body_ = &body; }

    /// The processes of the present page, which stays through snapshots and shrinks with the list.
    [[nodiscard]] LiveProcesses processes(const OstrelData& data);
    [[nodiscard]] std::size_t sessionPage() const { return sessionPage_; }

    void previousPage();
    /// A page that there isn't is mended by the next drawing.
    void nextPage();
    /// Tells of a process in the next turn, and copies it if that is asked for.
    void showDetails(const OstrelData::Proc& proc);

private:
    void renderBody();

    Services services_;
    PanelBody* body_ = nullptr;
    std::size_t sessionPage_ = 0;
    LifeToken life_;
};

} // namespace ostrel
