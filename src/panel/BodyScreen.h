// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/OstrelData.h"
#include "core/OstrelMode.h"

#include <optional>
#include <string_view>

namespace ostrel {

/// What the panel's body shows for a tab.
enum class BodyScreen {
    tab, ///< the tab itself
    loading, ///< no snapshot yet
    error, ///< no snapshot, and the collector failed
    empty, ///< a snapshot that says nothing
    stale, ///< a notice, then the tab from the last good snapshot
};

/// A screen, and what the readout says on it; without a text the readout stays as it is.
struct BodyChoice {
    BodyScreen screen = BodyScreen::tab;
    std::string_view readout;

    bool operator==(const BodyChoice&) const = default;
};

/// Chooses the screen. Automations, server and settings draw without a snapshot; the other tabs need one.
[[nodiscard]] BodyChoice chooseBody(
    OstrelMode mode, const std::optional<OstrelData>& lastData, std::string_view backendLastSource);

} // namespace ostrel
