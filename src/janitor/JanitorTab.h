// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/LifeToken.h"
#include "core/PanelBody.h"
#include "janitor/JanitorEngine.h"
#include "janitor/JanitorText.h"
#include "janitor/ProtectionList.h"
#include "platform/Alerts.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// The findings, the cleanup tab and the janitor's section of the settings: their state and their flows.
/// Nothing is read on a timer, and nothing is changed without two presses: the first lists exactly what would
/// happen, the second, in an alert that shows the list, acts. A press whose own flow is still under way is
/// dropped; two questions never stand at once. Main thread.
class JanitorTab {
public:
    /// All of it must outlive the tab.
    struct Platform {
        JanitorEngine::Platform engine;
        platform::UserDefaults& defaults;
        platform::Alerts& alerts;
        platform::Workspace& workspace;
    };
    static constexpr std::string_view cacheTargetsKey = "ostrel.cacheTargets";

    explicit JanitorTab(const Platform& platform);

    /// Connects the panel, which must outlive this. Without one the flows only keep state.
    void connect(PanelBody& body) { body_ = &body; }
    /// Who opens the tab of a name: "system", "processes", "sessions", "cleanup"; other names open none.
    void setOnOpenTab(std::function<void(std::string_view)> onOpenTab) { onOpenTab_ = std::move(onOpenTab); }

    /// What to draw in the insights tab and in the cleanup tab. The first call of either starts the first
    /// load, so it is made by a rendering and by nothing else.
    [[nodiscard]] FindingsBody findingsBody();
    [[nodiscard]] CleanupBody cleanupBody();
    /// What to draw in the settings.
    [[nodiscard]] JanitorSection settingsSection() const;

    [[nodiscard]] const JanitorState& state() const { return state_; }
    [[nodiscard]] const ProtectionList& protection() const { return protection_; }
    /// The caches that the user picked, in the order of picking.
    [[nodiscard]] std::vector<std::string> cacheTargets() const;

    // Presses.

    /// Reads the findings anew; nothing while they are read.
    void refreshFindings();
    /// Does what a finding proposes: opens a tab, or starts the stop of its processes.
    void pressFinding(const JanitorFinding& finding);
    void openTab(std::string_view target);
    /// Lists the files of a group, then asks, then removes.
    void pressFiles(const std::string& group);
    /// Lists the MCP servers of a depth, then asks, looks again, and stops them.
    void pressProcesses(const std::string& depth);
    /// Opens the folder of the receipts in the desktop's file manager.
    void openReceipts();
    /// Protects a name. True when the field is to be emptied; false for blanks, which change nothing.
    bool protectName(std::string_view text);
    /// Asks, in the next turn, and takes a name off the protection list.
    void confirmUnprotect(const std::string& name);
    /// Lists the caches that can be picked.
    void listCaches();
    /// Picks a cache, or puts it back when it was picked.
    void pickCache(const std::string& name, bool picked);

    /// Checks one process, asks, and stops it. `onDone` gets the line that tells the outcome, in a later
    /// turn; it isn't called when a stop of that process is under way already. The caller has asked
    /// `protection()`.
    void confirmStop(
        std::int64_t pid, const std::string& name, std::function<void(const std::string&)> onDone);

private:
    using Names = std::vector<std::string>;
    using Processes = std::vector<JanitorProcess>;

    void loadOnce();
    void collect();
    void loadReceipts();
    /// After an action: the receipts and the findings anew.
    void reloadAll();
    /// Draws the tabs that show the two status lines, if one of them is there.
    void rebuild();
    void rebuildSettings();
    void say(std::string lastAction);
    [[nodiscard]] std::string now() const;
    [[nodiscard]] Names selectionFor(std::string_view group) const;

    /// Begins the flow of that name; false when it is under way.
    [[nodiscard]] bool begin(const std::string& flow);
    void end(const std::string& flow);
    /// Asks now, or after the question that stands.
    void ask(std::function<void()> question);

    void filesListed(const std::string& group, const Names& selected, JanitorPreview preview);
    void confirmClean(const std::string& group, const Names& selected, const JanitorPreview& preview);
    void askUnprotect(const std::string& name);

    /// Those to which the signal went out.
    [[nodiscard]] Processes stopAll(const std::vector<StopTarget>& targets);
    void processesListed(const std::string& depth, JanitorKillPreview preview);
    void confirmStopMCP(const std::string& depth, const JanitorKillPreview& preview);
    void stopMCP(const std::string& depth, const Processes& listed, const JanitorKillPreview& second);
    void confirmStop(const std::vector<std::int64_t>& pids, const std::string& title);
    void findingChecked(const std::string& title, const JanitorKillPreview& preview);
    void askStopFinding(
        const std::string& title, const JanitorKillPreview& preview, const std::vector<StopTarget>& targets);
    void askStopOne(const std::string& name, const StopTarget& target,
        const std::function<void(const std::string&)>& onDone);

    Platform platform_;
    ProtectionList protection_;
    JanitorEngine engine_;
    JanitorState state_;
    PanelBody* body_ = nullptr;
    std::function<void(std::string_view)> onOpenTab_;
    std::uint64_t readings_ = 0; ///< of the findings, so far
    std::set<std::string> flows_; ///< under way
    bool asking_ = false;
    std::deque<std::function<void()>> questions_; ///< that wait for the one that stands
    LifeToken life_;
};

} // namespace ostrel
