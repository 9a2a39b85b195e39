// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"

class QVBoxLayout;

namespace ostrel {

/// Draws the top processes of a snapshot into the body, as the collector ordered them.
void renderProcesses(QVBoxLayout& body, const OstrelData& data);

} // namespace ostrel
