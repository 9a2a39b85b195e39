// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/LocalAnalyst.h"
#include "collector/Maintenance.h"
#include "panel/PanelState.h"

class QVBoxLayout;

namespace ostrel {

/// Draws the insights tab into the body: what the snapshot says, the analyst's opinion of it, and the
/// maintenance commands. The analyst and the maintenance must outlive the body.
void renderDiagnosis(QVBoxLayout& body, const OstrelData& data, const PanelState& state,
    LocalAnalyst& analyst, Maintenance& maintenance);

} // namespace ostrel
