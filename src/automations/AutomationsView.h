// SPDX-License-Identifier: Apache-2.0
#pragma once

class QVBoxLayout;

namespace ostrel {

class AutomationsTab;

/// Draws the automations into the body, `width` points wide: what there is, what was chosen of it, and twelve
/// jobs a page. The tab must outlive the body; its first drawing starts the first load. Main thread.
void renderAutomations(QVBoxLayout& body, AutomationsTab& tab, int width);

} // namespace ostrel
