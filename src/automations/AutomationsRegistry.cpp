// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsRegistry.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace ostrel {

namespace {

constexpr platform::Seconds listTimeout { 30 };
constexpr platform::Seconds refreshTimeout { 330 };
constexpr platform::Seconds journalTimeout { 60 };
constexpr platform::Seconds actTimeout { 130 };

/// An inventory with what is worked out once of it.
struct Inventory {
    AutomationsSnapshot snapshot;
    AutomationsIndex index;
};

} // namespace

AutomationsRegistry::AutomationsRegistry(const Platform& platform)
    : platform_(platform)
    , bridge_(std::make_shared<AutomationsBridge>(platform.children, platform.clock))
{
}

std::string AutomationsRegistry::bridgePath() const
{
    if (auto path = platform_.bundle.pathForResource("collectors/automations_bridge.py"))
        return *path;
    // As in a source tree, from a folder of it; a child has this process's working directory.
    return "../automations_bridge.py";
}

std::string AutomationsRegistry::receiptsDirectory() const
{
    return platform_.files.homeDirectory() + "/Library/Application Support/Ostrel/receipts";
}

template <typename Read, typename Receive>
void AutomationsRegistry::call(
    std::vector<std::string> arguments, platform::Seconds timeout, Read read, Receive receive)
{
    using Answer = decltype(read(std::optional<json::Value>()));
    const auto deliver
        = life_.guard([receive = std::move(receive)](Answer& answer) { receive(std::move(answer)); });
    platform_.globalQueue.async(platform::QueuePriority::userInitiated,
        [weak = std::weak_ptr(bridge_), path = bridgePath(), arguments = std::move(arguments), timeout,
            read = std::move(read), deliver, &mainQueue = platform_.mainQueue] {
            const auto bridge = weak.lock();
            if (!bridge)
                return;
            auto answer = std::make_shared<Answer>(read(bridge->call(path, arguments, timeout)));
            mainQueue.post([deliver, answer] { deliver(*answer); });
        });
}

void AutomationsRegistry::load(bool refresh, std::function<void()> completion)
{
    if (busy_)
        return;
    busy_ = true;
    std::vector<std::string> arguments { "list" };
    if (refresh)
        arguments.emplace_back("--refresh");
    call(
        std::move(arguments), refresh ? refreshTimeout : listTimeout,
        [](const std::optional<json::Value>& reply) {
            Inventory inventory {
                reply ? AutomationsSnapshot::parse(*reply) : AutomationsSnapshot::unavailable(), {}
            };
            inventory.index = indexOf(inventory.snapshot.items);
            return inventory;
        },
        [this, completion = std::move(completion)](Inventory inventory) {
            snapshot_ = std::move(inventory.snapshot);
            index_ = std::move(inventory.index);
            busy_ = false;
            completion();
        });
}

void AutomationsRegistry::journal(const Automation& item, std::function<void()> completion)
{
    const std::string key = item.key();
    // An empty journal holds the place, so that a second opening starts no second read.
    if (!journals_.try_emplace(key).second)
        return completion();
    call(
        { "journal", "--lane", item.lane, "--id", item.id, "--target", item.target }, journalTimeout,
        [item](const std::optional<json::Value>& reply) {
            return reply ? AutomationJournal::parse(*reply, item) : AutomationJournal::unread(item);
        },
        [this, key, completion = std::move(completion)](AutomationJournal journal) {
            receiveJournal(key, std::move(journal));
            completion();
        });
}

void AutomationsRegistry::receiveJournal(const std::string& key, AutomationJournal journal)
{
    journals_.insert_or_assign(key, std::move(journal.runs));
    // The inventory may be another one by now.
    const auto row = std::ranges::find_if(
        snapshot_.items, [&](const Automation& candidate) { return candidate.key() == key; });
    if (row == snapshot_.items.end())
        return;
    row->lastRun = std::move(journal.lastRun);
    row->lastResult = std::move(journal.lastResult);
    row->nextRun = std::move(journal.nextRun);
}

void AutomationsRegistry::act(const Automation& item, const std::string& op,
    std::function<void(const AutomationActionResult&)> completion)
{
    if (busy_)
        return;
    busy_ = true;
    call(
        { "act", "--lane", item.lane, "--id", item.id, "--op", op, "--confirm" }, actTimeout,
        [op, title = item.title](const std::optional<json::Value>& reply) {
            return reply ? AutomationActionResult::parse(*reply, op, title)
                         : AutomationActionResult::unanswered(op);
        },
        [this, key = item.key(), completion = std::move(completion)](const AutomationActionResult& result) {
            busy_ = false;
            if (const auto read = journals_.find(key); read != journals_.end())
                journals_.erase(read);
            completion(result);
        });
}

} // namespace ostrel
