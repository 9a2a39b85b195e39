// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Json.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// What a finding proposes.
struct JanitorAction {
    enum class Kind { none, openTab, kill, clean };

    Kind kind = Kind::none;
    std::string target; ///< of `openTab`: a tab's name
    std::string group; ///< of `clean`
    std::vector<std::int64_t> pids; ///< of `kill`; not judged yet

    [[nodiscard]] static JanitorAction parse(const json::Value& object);
};

/// How a finding's level is coloured: red, ink or muted of the panel's style.
enum class LevelColor { red, ink, muted };

/// One thing that the janitor saw beyond its threshold.
struct JanitorFinding {
    std::string id = "finding";
    std::string level = "info";
    std::string title;
    std::string seen;
    std::string source;
    std::string proposal;
    JanitorAction action;
    double estMB = 0; ///< MiB that could be given back; 0 for none
    std::int64_t count = 0;

    [[nodiscard]] static JanitorFinding parse(const json::Value& object);
    [[nodiscard]] LevelColor levelColor() const;
};

/// A file, or a folder that goes as a whole.
struct JanitorFile {
    std::string path;
    double mb = 0;
    std::int64_t ageDays = 0;

    [[nodiscard]] static JanitorFile parse(const json::Value& object);
};

/// What a cleanup of a group would remove.
struct JanitorPreview {
    /// Files that are kept of a listing; the alert names eight of them.
    static constexpr std::size_t mostFiles = 500;

    std::string group;
    std::string title;
    std::int64_t count = 0;
    double sizeMB = 0;
    std::vector<JanitorFile> files; ///< the largest first
    std::string error; ///< why nothing could be listed

    [[nodiscard]] static JanitorPreview parse(const json::Value& object, std::string_view group);
    /// In the place of an answer that never came.
    [[nodiscard]] static JanitorPreview failed(std::string_view group, std::string_view error);
};

/// One process of a preview.
struct JanitorProcess {
    std::int64_t pid = 0; ///< as the script printed it: any number
    std::string name;
    std::int64_t rssMB = 0;
    std::string cmd;
    std::string reason;
    std::int64_t start = 0; ///< in clock ticks since the machine's start; 0 when it isn't known

    [[nodiscard]] static JanitorProcess parse(const json::Value& object);
};

/// Their memory in MiB; held within 64 bits.
[[nodiscard]] std::int64_t rssMBOf(const std::vector<JanitorProcess>& processes);

/// Which processes may be stopped, and which not. Both empty when no answer came.
struct JanitorKillPreview {
    std::vector<JanitorProcess> allowed; ///< the largest first
    std::vector<JanitorProcess> refused;

    [[nodiscard]] static JanitorKillPreview parse(const json::Value& object);
    /// Those allowed.
    [[nodiscard]] std::size_t count() const { return allowed.size(); }
    /// Memory of those allowed, in MiB.
    [[nodiscard]] std::int64_t rssMB() const;
};

/// How a cleanup ended.
struct JanitorCleanResult {
    std::string title; ///< of the group; the error when no answer came
    std::int64_t removed = 0;
    double freedMB = 0;
    std::int64_t failedCount = 0; ///< left alone though listed
    std::string error; ///< why it didn't begin or ended early; the figures beside it hold
    std::string receipt; ///< the file of today's receipts; empty exactly when no answer came

    [[nodiscard]] static JanitorCleanResult parse(
        const json::Value& object, std::string_view group, std::string receipt);
    /// In the place of an answer that never came: what was removed isn't known.
    [[nodiscard]] static JanitorCleanResult failed(std::string_view error);
    [[nodiscard]] bool answered() const { return !receipt.empty(); }
};

/// A cache that can be picked.
struct CacheCandidate {
    std::string name;
    double sizeMB = 0;

    [[nodiscard]] static CacheCandidate parse(const json::Value& object);
};

/// The cleanup groups that the script knows.
struct JanitorGroups {
    std::vector<std::string> names;
    std::map<std::string, std::string, std::less<>> titles;

    [[nodiscard]] static JanitorGroups parse(const json::Value& object);
};

/// The lists of the other replies; empty where the key is absent or of another shape.
[[nodiscard]] std::vector<JanitorFinding> parseFindings(const json::Value& object);
[[nodiscard]] std::vector<CacheCandidate> parseCandidates(const json::Value& object);

} // namespace ostrel
