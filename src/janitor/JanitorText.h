// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "janitor/JanitorRecords.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// How far a cleanup goes.
inline constexpr std::array<std::string_view, 2> depths { "light", "deep" };
/// The group of agents' files at each of `depths`.
inline constexpr std::array<std::string_view, 2> agentGroups { "agents-light", "agents-deep" };
/// The one group that takes the user's selection.
inline constexpr std::string_view cachesGroup = "app-caches";

/// What the findings, the cleanup tab and the settings section are drawn from.
struct JanitorState {
    std::vector<JanitorFinding> findings;
    std::map<std::string, JanitorPreview, std::less<>> previews; ///< by group
    std::map<std::string, JanitorKillPreview, std::less<>> processPreviews; ///< by depth
    JanitorGroups groups;
    std::vector<std::string> receiptLines;
    std::vector<CacheCandidate> cacheCandidates;
    std::string status = "findings are collected on a press";
    std::string lastAction;
    bool running = false; ///< findings are being read
    bool loaded = false; ///< the first load has begun
};

/// A size: "%.0f mb" below 1024, else "%.1f gb".
[[nodiscard]] std::string mb(double value);
/// The fixed title of a known group, else the group.
[[nodiscard]] std::string_view groupTitle(std::string_view group);
/// The title that is shown: the script's, if it has one.
[[nodiscard]] std::string shownTitle(const JanitorState& state, std::string_view group);

/// Whether a group is one of the agents' files, which have rows of their own.
[[nodiscard]] bool isAgentsGroup(std::string_view group);
/// "{count} files · {size}".
[[nodiscard]] std::string filesText(const JanitorPreview& preview);
/// "pid {pid} · {name} · {rss} mb", and the reason behind it.
[[nodiscard]] std::string processLine(const JanitorProcess& process, bool withReason);
/// The first elements, `most` at most.
template <typename Element>
[[nodiscard]] std::vector<Element> firstOf(const std::vector<Element>& all, std::size_t most)
{
    return { all.begin(), all.begin() + static_cast<std::ptrdiff_t>(std::min(most, all.size())) };
}

/// A button. An empty tooltip or identifier is none.
struct JanitorButton {
    std::string title;
    int width = 0; ///< points; 0 leaves it to the layout
    bool enabled = true;
    bool active = false; ///< drawn as pressed
    std::string tooltip = {};
    std::string identifier = {}; ///< for assistive technology
};

/// A finding as a card. Empty texts take no room.
struct FindingCard {
    std::string level; ///< in capitals
    LevelColor color = LevelColor::muted;
    std::string title;
    std::string amount; ///< at the right of the title
    std::string seen; ///< up to three lines
    std::string source; ///< up to two lines
    std::string proposal; ///< up to two lines
    std::string accessibilityLabel;
    std::optional<JanitorButton> button; ///< a press: `JanitorTab::pressFinding`
};
[[nodiscard]] FindingCard findingCard(const JanitorFinding& finding);

/// The findings, from top to bottom.
struct FindingsBody {
    std::string title;
    JanitorButton refresh; ///< `JanitorTab::refreshFindings`
    std::string status; ///< up to two lines
    std::string lastAction; ///< up to three lines; empty: none
    std::string nothing; ///< in the place of cards; empty: none
    std::vector<FindingCard> cards; ///< in the order of `JanitorState::findings`, a hairline below each
    std::string cleanupLine;
    JanitorButton openCleanup; ///< `JanitorTab::openTab("cleanup")`
};
[[nodiscard]] FindingsBody findingsBody(const JanitorState& state);

/// What was listed at one depth: a heading and at most three lines.
struct ListedLines {
    std::string title;
    std::vector<std::string> lines;
};

/// One of the two things that are cleaned at a depth.
struct TargetRow {
    std::string_view key; ///< "agents": `JanitorTab::pressFiles(agentGroups[at])`; "mcp": `pressProcesses`
    std::string_view title;
    std::array<JanitorButton, 2> buttons; ///< in the order of `depths`, side by side, each half the width
    std::vector<std::string_view> notes; ///< up to two lines each
    std::vector<ListedLines> listed; ///< of the depths that were listed, in their order
};

/// A group with a row of its own.
struct GroupRow {
    std::string group; ///< `JanitorTab::pressFiles(group)`
    std::string title;
    std::string amount; ///< at the right; empty: nothing listed
    JanitorButton clean;
    std::string selected; ///< which caches are picked; empty for other groups
    std::string error; ///< in red, up to two lines; empty: none
    std::vector<std::string> lines; ///< of the listing, at most three
};

/// The cleanup tab, from top to bottom, a hairline after the status and after each row.
struct CleanupBody {
    std::string title;
    std::string hint; ///< at the right of the title
    std::string status; ///< up to two lines
    std::string lastAction; ///< up to three lines; empty: none
    std::array<TargetRow, 2> targets; ///< agents, mcp
    std::string groupsTitle; ///< empty: no groups
    std::vector<GroupRow> groups;
    std::string receiptsTitle;
    std::vector<std::string> receipts; ///< up to two lines each; what stands in the place of none
    JanitorButton openReceipts; ///< `JanitorTab::openReceipts`
};
[[nodiscard]] CleanupBody cleanupBody(
    const JanitorState& state, const std::vector<std::string>& cacheTargets);

/// A protected name in the settings.
struct ProtectedRow {
    std::string name;
    std::string text;
    bool locked = false; ///< in muted, without a button
    JanitorButton unprotect; ///< `JanitorTab::confirmUnprotect(name)`
};

/// A cache in the settings.
struct CacheRow {
    std::string name;
    std::string text;
    bool picked = false; ///< in ink, else in muted
    JanitorButton pick; ///< `JanitorTab::pickCache(name, picked)`
};

/// The settings' section, from top to bottom.
struct JanitorSection {
    std::string title;
    std::string note; ///< up to two lines
    std::string protectedTitle;
    std::vector<ProtectedRow> rows;
    std::string placeholder; ///< of the field, 240 points wide
    JanitorButton protect; ///< `JanitorTab::protectName(the field's text)`
    std::string cachesTitle;
    std::string picked; ///< up to two lines
    std::optional<JanitorButton> listCaches; ///< `JanitorTab::listCaches`; absent when there are candidates
    std::vector<CacheRow> caches;
    JanitorButton openReceipts; ///< `JanitorTab::openReceipts`
};
[[nodiscard]] JanitorSection janitorSection(const JanitorState& state,
    const std::vector<std::string>& displayList, const std::vector<std::string>& cacheTargets);

} // namespace ostrel
