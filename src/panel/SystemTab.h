// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "design/MotionServices.h"
#include "panel/LiveRegistry.h"
#include "panel/PanelState.h"
#include "platform/ProcessInfo.h"

class QVBoxLayout;

namespace ostrel {

/// Draws the system tab into the body: every reading with where it comes from and how old it is. The gauges
/// are registered and stand at 0 until the first values are written to them.
void renderSystem(QVBoxLayout& body, const OstrelData& data, const PanelState& state,
    const platform::ProcessInfo& machine, const MotionServices& motion, LiveRegistry& live);

} // namespace ostrel
