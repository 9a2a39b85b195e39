// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/Settings.h"
#include "collector/SnapshotCycle.h"
#include "history/OstrelHistory.h"
#include "readings/NativeTick.h"

#include <functional>
#include <string>

namespace ostrel {

/// The state that the tabs are drawn from. All of it outlives the panel.
struct PanelState {
    const NativeTick& tick;
    SnapshotCycle& snapshots;
    const OstrelHistory& history;
    const Settings& settings;
    std::string historyFilePath = {};
    /// Whether a check of the server has succeeded; empty without anybody who checks.
    std::function<bool()> serverChecked = {};
};

} // namespace ostrel
