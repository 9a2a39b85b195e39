// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Json.h"
#include "design/voxel/AutomationBadge.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// One scheduled job, as the bridge tells it: nothing is trimmed, sorted or made unique.
struct Automation {
    std::string lane; ///< key of the scheduler that owns the job
    std::string laneTitle;
    std::string id; ///< unique only within its lane; any bytes
    std::string title = "?";
    std::string schedule; ///< in words
    std::string state; ///< the scheduler's own word
    bool active = false; ///< counts as enabled at present
    std::string executor;
    std::string host;
    std::string owner;
    std::string registry;
    std::string family; ///< name of a voxel family
    std::string tag;
    bool canRun = false; ///< a one-off run may be asked for
    std::string observation = "unobserved"; ///< how the state was found out
    std::string location;
    std::string migration;
    std::string registryState;
    bool toggles = false; ///< can be enabled and disabled from here
    std::string target; ///< goes back to the bridge as it came
    std::string lastRun; ///< ISO 8601, or a word
    std::string lastResult; ///< begins with "failed" for a failure
    std::string nextRun; ///< ISO 8601

    /// The identity of a row everywhere: "{lane}:{id}", unescaped.
    [[nodiscard]] std::string key() const { return lane + ":" + id; }
    [[nodiscard]] AutomationVoxelFamily voxelFamily() const { return AutomationBadge::named(family); }
    [[nodiscard]] AutomationVoxelState voxelState() const;
    /// Nobody has looked whether the state is true.
    [[nodiscard]] bool unverified() const;
    /// The last run has failed.
    [[nodiscard]] bool lastRunFailed() const { return lastResult.starts_with("failed"); }

    /// Reads a row of the inventory; what is absent or of another type stays at its default.
    [[nodiscard]] static Automation parse(const json::Value& object);

    bool operator==(const Automation&) const = default;
};

/// One scheduler.
struct AutomationLane {
    std::string key;
    std::string title;
    std::string owner;
    std::string registry;
    std::int64_t count = 0; ///< jobs
    bool observed = false; ///< it could be reached
    std::string note; ///< why it couldn't, or why it holds nothing

    [[nodiscard]] static AutomationLane parse(const json::Value& object);
};

/// One line of a job's journal.
struct AutomationRun {
    std::string at;
    std::string status;
    std::string line;

    [[nodiscard]] static AutomationRun parse(const json::Value& object);

    bool operator==(const AutomationRun&) const = default;
};

/// What a read of one job's journal came to: the runs, and the three values of its row.
struct AutomationJournal {
    std::vector<AutomationRun> runs; ///< newest first
    std::string lastRun;
    std::string lastResult;
    std::string nextRun;

    /// What `answer` leaves out is as it stands in `item`.
    [[nodiscard]] static AutomationJournal parse(const json::Value& answer, const Automation& item);
    /// No answer came: no runs, the row as it is.
    [[nodiscard]] static AutomationJournal unread(const Automation& item);
};

/// What came of an action.
struct AutomationActionResult {
    bool ok = false;
    std::string op;
    std::string message;
    std::string receipt; ///< path of the receipt that the bridge wrote, or empty

    [[nodiscard]] static AutomationActionResult parse(
        const json::Value& answer, const std::string& op, const std::string& title);
    /// The bridge gave no answer.
    [[nodiscard]] static AutomationActionResult unanswered(const std::string& op);
};

/// One read of the inventory. `total` and `active` are the bridge's own count.
struct AutomationsSnapshot {
    bool ok = false;
    std::string error;
    std::string generatedAt; ///< when it was collected
    std::string readAt; ///< when the bridge handed it out; empty: not read yet
    std::int64_t total = 0;
    std::int64_t active = 0;
    std::vector<std::string> alerts;
    std::vector<AutomationLane> lanes;
    std::vector<Automation> items;
    std::vector<json::Value> quotas; ///< objects; `AgentBudget` reads them

    [[nodiscard]] static AutomationsSnapshot parse(const json::Value& answer);
    /// No answer came.
    [[nodiscard]] static AutomationsSnapshot unavailable();
};

/// The elements of an array of objects; none when it is absent, no array, or holds anything else.
[[nodiscard]] std::vector<const json::Value*> objectsIn(const json::Value& object, std::string_view key);

} // namespace ostrel
