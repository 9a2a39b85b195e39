// SPDX-License-Identifier: Apache-2.0
#pragma once

class QVBoxLayout;

namespace ostrel {

class AutomationsTab;

/// Draws the agents' budget into the body, `width` points wide. The first drawing of it, or of the
/// automations, starts the first load. Main thread.
void renderAgentBudget(QVBoxLayout& body, AutomationsTab& tab, int width);

} // namespace ostrel
