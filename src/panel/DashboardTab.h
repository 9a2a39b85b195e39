// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationsTab.h"
#include "collector/OstrelData.h"
#include "core/PanelBody.h"
#include "panel/LiveRegistry.h"
#include "panel/PanelState.h"

class QVBoxLayout;

namespace ostrel {

/// Draws the dashboard into the body: the pressure, four readings, the agents' budget, the last two hours,
/// and the doors to other tabs. `panel` changes the tab; it and `automations` outlive what is drawn.
void renderOverview(QVBoxLayout& body, const OstrelData& data, const PanelState& state,
    AutomationsTab& automations, LiveRegistry& live, PanelBody& panel);

} // namespace ostrel
