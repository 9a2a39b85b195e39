// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationsTab.h"

class QVBoxLayout;

namespace ostrel {

/// Draws the settings into the body, section by section. The automations must outlive the body.
void renderSettings(QVBoxLayout& body, AutomationsTab& automations);

} // namespace ostrel
