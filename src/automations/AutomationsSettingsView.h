// SPDX-License-Identifier: Apache-2.0
#pragma once

class QVBoxLayout;

namespace ostrel {

class AutomationsTab;

/// Draws the automations' section of the settings into the body, `width` points wide. Starts no load. Main
/// thread.
void renderAutomationsSettings(QVBoxLayout& body, AutomationsTab& tab, int width);

} // namespace ostrel
