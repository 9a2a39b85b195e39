// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationRecords.h"
#include "automations/AutomationsIndex.h"
#include "platform/Alerts.h"

#include <array>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// A time in short: "2026-05-04 06:00" of an ISO time, "—" of none, any other text up to 28 signs.
[[nodiscard]] std::string shortTime(std::string_view text);

/// The word that tells how a job is: its last result, or else its state.
[[nodiscard]] std::string verdict(const Automation& item);

/// A text of the bridge's as a view can show it: on one line, and no longer than any view has room for.
[[nodiscard]] std::string shownText(std::string_view text);

/// A button and what it looks like at present.
struct AutomationButton {
    std::string title;
    int width = 0; ///< points
    bool enabled = true;
    bool active = false;
    std::string toolTip = {};
    std::string identifier = {}; ///< the same from one drawing to the next
};

/// A lane that can be chosen; the empty key stands for all of them.
struct LaneChip {
    std::string lane;
    AutomationButton button;
};

struct StateChip {
    AutomationStateFilter filter = AutomationStateFilter::all;
    AutomationButton button;
};

/// What an open row says below its line, and what can be done there.
struct AutomationCard {
    struct Line {
        std::string_view label;
        std::string value;
    };
    static constexpr std::size_t lineCount = 12;
    static constexpr std::size_t mostRuns = 10;

    struct Action {
        std::string op;
        AutomationButton button;
    };

    std::array<Line, lineCount> lines;
    std::vector<std::string> runs; ///< or a line that stands for none
    std::optional<Action> run;
    std::optional<Action> toggle; ///< without one the job is switched elsewhere
    std::optional<Action> plan;
    AutomationButton receipts;
};

/// One job in the list.
struct AutomationRow {
    Automation item;
    std::string heading; ///< of the rows from here on; empty: that of the row before
    std::string title;
    std::string detail;
    std::string word; ///< how it is
    bool failed = false; ///< the word tells of a failure
    AutomationButton open;
    std::string accessibilityLabel;
    std::optional<AutomationCard> card; ///< of an open row
};

/// What the user has chosen and done in the tab. Nothing of it is kept on disk.
struct AutomationsState {
    AutomationsFilter filter;
    std::set<std::string, std::less<>> expanded; ///< keys of the open rows
    std::string lastAction;
    bool loaded = false; ///< the first load was started
    std::size_t page = 0;
};

/// What the tab is drawn from beside its own state.
struct AutomationsFacts {
    const AutomationsSnapshot& snapshot;
    const AutomationsIndex& index; ///< of that snapshot
    const std::map<std::string, std::vector<AutomationRun>, std::less<>>& journals;
    bool busy = false;
};

/// All that the tab says.
struct AutomationsBody {
    static constexpr std::size_t mostAlerts = 6;
    /// The bridge has six lanes; what has gone astray must not fill the panel with chips.
    static constexpr std::size_t mostLanes = 60;

    std::string title;
    std::string readLine;
    AutomationButton refresh;
    std::vector<LaneChip> lanes;
    std::vector<StateChip> states;
    std::string query;
    std::string error; ///< empty without one, like the following
    std::string lastAction;
    std::vector<std::string> alerts;
    std::size_t page = 0; ///< the shown one, which may be an earlier one than was asked for
    std::string pageLabel;
    std::string nothing; ///< in the place of rows
    std::vector<AutomationRow> rows;
    AutomationButton previous;
    AutomationButton next;
};

[[nodiscard]] AutomationsBody automationsBody(const AutomationsState& state, const AutomationsFacts& facts);

/// The question before an action; its first button does what its word says.
[[nodiscard]] platform::Alert confirmAlert(const std::string& op, const Automation& item);

/// How an action ended, in one line.
[[nodiscard]] std::string outcomeText(const AutomationActionResult& result);

/// The automations' section of the settings.
struct AutomationsSection {
    struct Lane {
        std::string text;
        bool observed = false;
    };

    std::string title;
    std::array<std::string, 2> notes;
    std::vector<Lane> lanes;
    AutomationButton receipts;
};

[[nodiscard]] AutomationsSection automationsSection(const AutomationsSnapshot& snapshot);

} // namespace ostrel
