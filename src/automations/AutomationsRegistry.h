// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationRecords.h"
#include "automations/AutomationsBridge.h"
#include "automations/AutomationsIndex.h"
#include "core/LifeToken.h"
#include "platform/Bundle.h"
#include "platform/ChildProcess.h"
#include "platform/Clock.h"
#include "platform/FileManager.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// The client of the automations bridge: the last inventory, the journals that were read, and the actions.
/// At most one load or action is under way; journals are read beside it. Completions run on the main thread,
/// and not at all once this is gone. Main thread.
class AutomationsRegistry {
public:
    /// All of it must outlive every background job.
    struct Platform {
        platform::MainQueue& mainQueue;
        platform::GlobalQueue& globalQueue;
        const platform::FileManager& files;
        const platform::Bundle& bundle;
        const platform::Clock& clock;
        platform::ChildProcess& children;
    };
    using Journals = std::map<std::string, std::vector<AutomationRun>, std::less<>>;

    explicit AutomationsRegistry(const Platform& platform);

    /// This process is a self-test, in which a made-up inventory may stand in for the script.
    void setSelfTest(bool selfTest) { bridge_->setSelfTest(selfTest); }

    /// Where the script stands, or would stand.
    [[nodiscard]] std::string bridgePath() const;
    /// The folder in which the bridge leaves its receipts; nothing is written there from here.
    [[nodiscard]] std::string receiptsDirectory() const;

    /// Reads the inventory, from the schedulers themselves when `refresh` is set. A failed read empties what
    /// was there. Dropped without a completion while busy.
    void load(bool refresh, std::function<void()> completion);
    /// Reads a job's journal, once until an action on it; else calls `completion` at once.
    void journal(const Automation& item, std::function<void()> completion);
    /// Runs, enables, disables or plans. Whoever calls this has asked the user. Dropped without a completion
    /// while busy.
    void act(const Automation& item, const std::string& op,
        std::function<void(const AutomationActionResult&)> completion);

    [[nodiscard]] const AutomationsSnapshot& snapshot() const { return snapshot_; }
    /// Of the present inventory.
    [[nodiscard]] const AutomationsIndex& index() const { return index_; }
    /// By `Automation::key`; an empty one is being read, or there was nothing to read.
    [[nodiscard]] const Journals& journals() const { return journals_; }
    [[nodiscard]] bool busy() const { return busy_; }

private:
    /// Calls the bridge off the main thread; `read` makes the answer there, of a reply or of none, and
    /// `receive` gets it here.
    template <typename Read, typename Receive>
    void call(std::vector<std::string> arguments, platform::Seconds timeout, Read read, Receive receive);
    void receiveJournal(const std::string& key, AutomationJournal journal);

    Platform platform_;
    std::shared_ptr<AutomationsBridge> bridge_;
    AutomationsSnapshot snapshot_;
    AutomationsIndex index_;
    Journals journals_;
    bool busy_ = false;
    LifeToken life_;
};

} // namespace ostrel
