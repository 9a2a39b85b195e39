// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationsTab.h"
#include "core/PanelBody.h"
#include "panel/LiveSessions.h"
#include "panel/PanelState.h"
#include "sessions/SessionPanel.h"

class QVBoxLayout;

namespace ostrel {

/// What the agents tab is drawn from beside the snapshot. All of it must outlive the body.
struct SessionsParts {
    AutomationsTab& automations;
    SessionPanel& terminals;
    LiveSessions& live;
    PanelBody& panel; ///< changes the tab
};

/// Draws the agents tab into the body: the agents' budget, the terminals that can be reopened, the agents'
/// processes, and what the snapshot counted.
void renderSessions(
    QVBoxLayout& body, const OstrelData& data, const PanelState& state, const SessionsParts& parts);

} // namespace ostrel
