// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "panel/LiveRegistry.h"
#include "panel/PanelState.h"

class QVBoxLayout;

namespace ostrel {

/// Draws the dashboard into the body: the live readings, and what the minute history holds.
void renderOverview(QVBoxLayout& body, const PanelState& state, LiveRegistry& live);

} // namespace ostrel
