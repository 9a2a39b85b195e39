// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Json.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// One snapshot as the collector script printed it. A plain value; a key that was absent, or of another type,
/// holds its default.
struct OstrelData {
    /// Sizes in GiB.
    struct RAM {
        double total = 0;
        double used = 0;
        std::int64_t usedPct = 0;
        double wired = 0;
        double compressed = 0;
        double free = 0;
        bool operator==(const RAM&) const = default;
    };

    /// Sizes in MiB, those named GB in GiB.
    struct Swap {
        std::int64_t total = 0;
        std::int64_t used = 0;
        std::int64_t free = 0;
        std::int64_t usedPct = 0;
        double totalGB = 0;
        double usedGB = 0;
        double freeGB = 0;
        std::string meaning;
        bool operator==(const Swap&) const = default;
    };

    struct Load {
        double l1 = 0;
        double l5 = 0;
        double l15 = 0;
        std::int64_t ncpu = 0;
        std::int64_t pct = 0; ///< the one-minute load as a percentage of the cores
        bool operator==(const Load&) const = default;
    };

    /// Processes of one family.
    struct FanEntry {
        std::string key;
        std::int64_t count = 0;
        bool operator==(const FanEntry&) const = default;
    };

    /// Helper processes of one browser.
    struct BundleEntry {
        std::string name;
        std::int64_t count = 0;
        bool operator==(const BundleEntry&) const = default;
    };

    struct Proc {
        std::int64_t rss = 0; ///< MiB
        std::string pid;
        std::string name;
        std::string grp;
        std::string cmd;
        double cpu = 0; ///< percent of one core
        bool operator==(const Proc&) const = default;
    };

    struct Offender {
        std::string label;
        double cpu = 0;
        std::int64_t rss = 0; ///< MiB
        std::string source;
        std::string risk;
        std::string action;
        std::string reason;
        bool operator==(const Offender&) const = default;
    };

    struct LaunchdAudit {
        std::int64_t intervalJobs = 0;
        std::int64_t runAtLoadInterval = 0;
        std::int64_t keepAlive = 0;
        std::int64_t shellFirst = 0;
        bool operator==(const LaunchdAudit&) const = default;
    };

    struct Service {
        std::string name;
        std::string scope;
        std::string state;
        std::string url;
        std::int64_t pid = 0;
        std::int64_t rss = 0; ///< MiB
        double cpu = 0;
        std::string path;
        std::string launchAgent;
        std::string note;
        bool operator==(const Service&) const = default;
    };

    struct Trend {
        std::int64_t samples = 0;
        std::string summary = "history warming up";
        std::string direction = "flat";
        std::int64_t swapDelta = 0;
        std::int64_t loadDelta = 0;
        std::int64_t mcpDelta = 0;
        bool operator==(const Trend&) const = default;
    };

    /// What the collector says about itself.
    struct Meta {
        std::string backend = "on-demand local CLI";
        std::string codePath = "bundled collector";
        std::string projectPath;
        std::string nativeApp = "~/Applications/OSTREL.app";
        std::string historyPath = "~/Library/Application Support/ostrel/mem-history.jsonl";
        std::string serverURL;
        std::string dataEndpoint = "python3 ostrel.py json";
        std::string analyzeEndpoint = "python3 ostrel.py analyze";
        std::string cleanupEndpoint = "python3 ostrel.py clean";
        std::string sessionInspectorURL;
        std::string nativeRefresh = "bar: native sysctl and host CPU readings on every tick";
        std::string panelRefresh = "panel: short-lived CLI snapshot while open";
        std::string serverModel = "no listener or browser dashboard";
        std::string serviceModel = "local services";
        bool operator==(const Meta&) const = default;
    };

    /// One sample that the collector saved.
    struct HistorySample {
        std::int64_t swap = 0;
        std::int64_t load = 0;
        std::int64_t mcp = 0;
        std::string ts;
        bool operator==(const HistorySample&) const = default;
    };

    struct Groups {
        std::int64_t claude = 0;
        std::int64_t runtime = 0;
        std::int64_t app = 0;
        bool operator==(const Groups&) const = default;
    };

    struct Verdict {
        std::string level = "ok";
        std::string headline;
        std::string cause;
        double perSess = 0; ///< MCP processes per agent session
        bool operator==(const Verdict&) const = default;
    };

    /// Reads the script's object. Can't fail: what doesn't fit takes its default.
    [[nodiscard]] static OstrelData parse(const json::Value& dictionary);

    /// Where a measurement comes from; nothing when the collector published no method for it.
    [[nodiscard]] std::optional<std::string> source(std::string_view key) const;

    std::string ts; ///< when the collector took it; an empty one marks an empty snapshot
    std::string host;
    RAM ram;
    Swap swap;
    Load load;
    std::vector<FanEntry> fan; ///< known families in their order, then the others by name
    std::vector<BundleEntry> chromiumBundles; ///< the largest first
    std::int64_t claudeSessions = 0;
    std::int64_t codexSessions = 0;
    std::vector<Proc> procs;
    std::vector<Proc> liveSessions;
    std::vector<Offender> offenders;
    LaunchdAudit launchd;
    std::vector<Service> services;
    Trend trend;
    Meta meta;
    std::vector<HistorySample> history;
    std::string historyState = "unavailable";
    json::Value systemObservation = json::Value::object(); ///< kept whole
    std::map<std::string, std::string, std::less<>> accuracy; ///< a source line per measurement
    Groups groups;
    Verdict verdict;

    bool operator==(const OstrelData&) const = default;
};

} // namespace ostrel
