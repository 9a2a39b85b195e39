// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/CollectorRunner.h"
#include "collector/SnapshotCycle.h"
#include "core/LifeToken.h"
#include "core/PanelBody.h"
#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"

#include <deque>
#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace ostrel {

/// The two small commands of the collector's script beside the snapshot: an audit of MCP processes, which
/// changes nothing, and the compaction of the instrument's own history. Both end in a report of what was
/// seen; one runs at a time, and none beside a snapshot. Main thread.
class Maintenance {
public:
    /// All of it must outlive this.
    struct Platform {
        platform::MainQueue& mainQueue;
        platform::GlobalQueue& globalQueue;
        const platform::Clock& clock;
        platform::Alerts& alerts;
    };

    /// What runs, by the words of `cleanupRunning`.
    static constexpr std::string_view auditKey = "orphan-mcp";
    static constexpr std::string_view previewKey = "trim-logs";
    static constexpr std::string_view compactKey = "deep-clean";

    /// Lines that the report keeps.
    static constexpr std::size_t longestReport = 24;

    Maintenance(
        const Platform& platform, std::shared_ptr<CollectorRunner> runner, const SnapshotCycle& snapshots);

    /// Connects the panel, which must outlive this. Without one the runs only keep state.
    void connect(PanelBody& body) { body_ = &body; }

    /// Audits the MCP processes.
    void runClean();
    /// Previews the compaction.
    void trimLogs();
    /// Asks in the next turn, and compacts after a confirmation.
    void deepClean();

    /// Appends a line to the report; where that is on screen, it shows at once.
    void report(std::string line);
    /// The local time as "HH:mm:ss".
    [[nodiscard]] std::string nowStr() const;
    /// The panel has closed: the run that was on its way is forgotten.
    void panelDidClose();

    [[nodiscard]] const std::set<std::string, std::less<>>& cleanupRunning() const { return cleanupRunning_; }
    /// The sentence of the last run that ended; empty before the first.
    [[nodiscard]] const std::string& cleanupLastResult() const { return cleanupLastResult_; }
    /// Oldest first.
    [[nodiscard]] const std::deque<std::string>& cleanupReport() const { return cleanupReport_; }

private:
    void confirmDeepClean();
    void runMaintenance(std::string_view command, bool apply);
    void receive(std::string_view key, std::string_view command, std::int64_t generation,
        const CollectorResult& result);
    void renderBody();

    Platform platform_;
    std::shared_ptr<CollectorRunner> runner_;
    const SnapshotCycle& snapshots_;
    PanelBody* body_ = nullptr;
    std::set<std::string, std::less<>> cleanupRunning_;
    std::string cleanupLastResult_;
    std::deque<std::string> cleanupReport_;
    LifeToken life_;
};

/// What a run of `command` came to, in one sentence.
[[nodiscard]] std::string maintenanceResult(std::string_view command, const CollectorResult& result);

} // namespace ostrel
