// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/Maintenance.h"
#include "collector/OstrelData.h"

#include <string_view>

class QVBoxLayout;

namespace ostrel {

/// Draws the maintenance commands and their report into the body. `maintenance` must outlive it.
void renderCleanup(
    QVBoxLayout& body, const OstrelData& data, std::string_view backendLastSource, Maintenance& maintenance);

} // namespace ostrel
