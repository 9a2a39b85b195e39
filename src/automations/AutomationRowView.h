// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationsText.h"

class QVBoxLayout;

namespace ostrel {

class AutomationsTab;

/// Adds a job's line, and its card when it is open, to the list. The tab must outlive it. Main thread.
void addAutomationRow(QVBoxLayout& list, const AutomationRow& row, AutomationsTab& tab, int width);

} // namespace ostrel
