// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/BarTitle.h"
#include "collector/OstrelData.h"
#include "history/OstrelHistory.h"
#include "panel/SourcedRow.h"
#include "platform/Clock.h"
#include "platform/ProcessInfo.h"
#include "readings/NativeStats.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ostrel {

/// What the operating system says about the machine.
struct MachineFacts {
    std::string system; ///< its name and version
    double uptime = 0; ///< seconds
    std::optional<platform::ThermalState> thermal;
    std::optional<bool> lowPower;
};

/// What the system tab is drawn from, beside the snapshot and the minute history.
struct SystemFacts {
    MachineFacts machine;
    NativeStats native;
    platform::Seconds nativeInterval { 0 };
    platform::Seconds panelInterval { 0 };
    std::size_t samples = 0; ///< in the rolling record
    std::optional<std::string> snapshotAge; ///< as in "12s ago"
    bool snapshotStale = false;
    std::string backendSource;
    std::string backendState;
    BarParts barParts;
    std::string barTitle;
    std::string historyFilePath;
    bool differentiateWithoutColor = false; ///< a level is told by a mark as well
};

/// What the system tab is stacked from.
namespace SystemItem {

/// Room between two items, in points.
struct Gap {
    int height = 0;
};

/// The caption of a group.
struct Section {
    std::string title;
};

/// A value without a source.
struct Pair {
    std::string label;
    std::string value;
};

/// The free memory, which the tick keeps up to date.
struct Free {
    std::string text;
    std::string_view level; ///< "normal", "warn" or "crit"
};

struct Note {
    std::string text;
};

/// The graph of the rolling record.
struct Sparkline {
    std::string_view caption;
};

/// The three gauges.
struct Gauges { };

/// How the readings come about.
struct Model {
    std::string title;
    std::string readings;
    std::string meaning;
};

} // namespace SystemItem

using SystemRow = std::variant<SystemItem::Gap, SystemItem::Section, SourcedRow, SystemItem::Pair, SourceLine,
    SystemItem::Free, SystemItem::Note, SystemItem::Sparkline, SystemItem::Gauges, SystemItem::Model>;

/// All of the system tab, from its top down.
[[nodiscard]] std::vector<SystemRow> systemText(
    const SystemFacts& facts, const OstrelData& data, const OstrelHistory& history);

/// How that much free memory is judged: "crit" below 500 MiB, "warn" below 1500, else "normal".
[[nodiscard]] std::string_view freeLevel(std::int64_t freeMB);

} // namespace ostrel
