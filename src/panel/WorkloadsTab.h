// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "panel/Workloads.h"

class QVBoxLayout;

namespace ostrel {

/// Draws the processes of a snapshot into the body, by the present filter. The workloads must outlive the
/// body.
void renderProcesses(QVBoxLayout& body, const OstrelData& data, Workloads& workloads);

} // namespace ostrel
