// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "panel/BodyScreen.h"

#include <functional>
#include <string>

class QVBoxLayout;

namespace ostrel {

/// Draws what a body says in place of its tab, or above it, while the snapshot is missing, empty or stale.
/// Nothing for the tab's own screen. `backendState` is the collector's last word, `retry` what the button
/// does.
void renderNotice(
    QVBoxLayout& body, BodyScreen screen, const std::string& backendState, std::function<void()> retry);

} // namespace ostrel
