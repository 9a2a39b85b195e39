// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/CollectorRunner.h"
#include "core/LifeToken.h"
#include "janitor/JanitorReceipts.h"
#include "janitor/JanitorRecords.h"
#include "janitor/ProtectionList.h"
#include "platform/Bundle.h"
#include "platform/ChildProcess.h"
#include "platform/Clock.h"
#include "platform/FileManager.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"
#include "platform/ProcessSignals.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// A process of a preview, held since the preview arrived.
struct StopTarget {
    JanitorProcess process;
    platform::Hold hold;
};

/// The only way from the tabs to anything that changes the machine: the janitor's script, in which all
/// listing and all deletion happens, and the one signal that the program ever sends. Completions come in a
/// later turn of the main thread, and not at all once the engine is gone. Main thread.
class JanitorEngine {
public:
    /// All of it must outlive the engine; `children`, the queues and the files live to the process's end.
    struct Platform {
        platform::MainQueue& mainQueue;
        platform::GlobalQueue& globalQueue;
        platform::FileManager& files;
        platform::Bundle& bundle;
        platform::Clock& clock;
        platform::ChildProcess& children;
        platform::ProcessSignals& processSignals;
    };
    /// Processes that are held at once at most: each takes a descriptor of the few that a process has.
    static constexpr std::size_t mostHeld = 256;

    JanitorEngine(const Platform& platform, const ProtectionList& protection);

    /// Where the script stands, or would stand.
    [[nodiscard]] std::string scriptPath() const;

    /// The findings, and an error that is empty when an answer came.
    void findings(std::function<void(std::vector<JanitorFinding>, std::string)> completion);
    /// What a cleanup would remove; `selected` are picked names, none for groups that take none.
    void preview(const std::string& group, const std::vector<std::string>& selected,
        std::function<void(JanitorPreview)> completion);
    /// Removes. The script decides afresh what goes.
    void clean(const std::string& group, const std::vector<std::string>& selected,
        std::function<void(JanitorCleanResult)> completion);
    /// The caches that can be picked, the largest first.
    void cacheCandidates(std::function<void(std::vector<CacheCandidate>)> completion);
    /// Which of these processes may be stopped.
    void killPreview(
        const std::vector<std::int64_t>& pids, std::function<void(JanitorKillPreview)> completion);
    /// The MCP servers of a depth, and which of them may be stopped.
    void mcpPreview(std::string_view depth, std::function<void(JanitorKillPreview)> completion);
    void groups(std::function<void(JanitorGroups)> completion);
    /// The newest receipts, a line each.
    void receiptLines(std::size_t limit, std::function<void(std::vector<std::string>)> completion);

    /// Takes hold of processes as they are listed; a pid that is listed twice only once. Signals nothing.
    [[nodiscard]] std::vector<StopTarget> hold(const std::vector<JanitorProcess>& processes);
    /// The last gate: asks the protection list once more, sends SIGTERM through the hold, once, and writes
    /// the receipt. What came of it begins with "stopped", "could not" or "protected".
    [[nodiscard]] std::string stop(const StopTarget& target);

    [[nodiscard]] const JanitorReceipts& receipts() const { return receipts_; }

private:
    /// Runs the script and reads its answer off the main thread: `read` gets the reply, or none and why.
    template <typename Answer, typename Read>
    void call(std::vector<std::string> arguments, platform::Seconds timeout, Read read,
        std::function<void(Answer)> completion);
    /// What tells the script of the user's changes to the protection list.
    [[nodiscard]] std::vector<std::string> withSettings(std::vector<std::string> arguments) const;

    Platform platform_;
    const ProtectionList& protection_;
    JanitorReceipts receipts_;
    std::shared_ptr<CollectorRunner> runner_;
    LifeToken life_;
};

} // namespace ostrel
