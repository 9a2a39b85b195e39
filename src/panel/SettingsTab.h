// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationsTab.h"
#include "janitor/JanitorTab.h"

class QVBoxLayout;

namespace ostrel {

/// Draws the settings into the body, section by section. What they tell of must outlive the body.
void renderSettings(QVBoxLayout& body, AutomationsTab& automations, JanitorTab& janitor);

} // namespace ostrel
