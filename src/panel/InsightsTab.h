// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/LocalAnalyst.h"
#include "collector/Maintenance.h"
#include "janitor/JanitorTab.h"
#include "panel/PanelState.h"

class QVBoxLayout;

namespace ostrel {

/// Draws the insights tab into the body: the janitor's findings, what the snapshot says, the analyst's
/// opinion of it, and the maintenance commands. All of them must outlive the body.
void renderDiagnosis(QVBoxLayout& body, const OstrelData& data, const PanelState& state, JanitorTab& janitor,
    LocalAnalyst& analyst, Maintenance& maintenance);

} // namespace ostrel
