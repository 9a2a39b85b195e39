// SPDX-License-Identifier: Apache-2.0
#include "collector/Maintenance.h"

#include "core/Json.h"
#include "core/LocalTime.h"

#include <optional>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::string_view auditCommand = "clean";
constexpr std::string_view historyCommand = "history-clean";

std::string_view keyOf(std::string_view command, bool apply)
{
    if (command == auditCommand)
        return Maintenance::auditKey;
    return apply ? Maintenance::compactKey : Maintenance::previewKey;
}

} // namespace

std::string maintenanceResult(std::string_view command, const CollectorResult& result)
{
    const auto answer = result.status == 0 ? json::parseObject(result.data) : std::nullopt;
    if (!answer)
        return "Failed: " + (result.error.empty() ? std::string("invalid response") : result.error);
    if (command == auditCommand)
        return fmt::format("MCP audit: {} observed; {} detached for review. 0 terminated. All discovered "
                           "processes protected.",
            json::printed(*answer, "mcp_processes", "0"), json::printed(*answer, "found", "0"));
    return fmt::format("Own history: {}; {} → {} bytes. No RAM freed. Disk freed 0 bytes; an applied "
                       "compaction retains a backup.",
        json::printed(*answer, "status", "unknown"), json::printed(*answer, "before_bytes", "0"),
        json::printed(*answer, "after_bytes", "0"));
}

Maintenance::Maintenance(
    const Platform& platform, std::shared_ptr<CollectorRunner> runner, const SnapshotCycle& snapshots)
    : platform_(platform)
    , runner_(std::move(runner))
    , snapshots_(snapshots)
{
}

void Maintenance::runClean() { runMaintenance(auditCommand, false); }

void Maintenance::trimLogs() { runMaintenance(historyCommand, false); }

void Maintenance::deepClean()
{
    // In a turn of its own: the control that asks may go meanwhile, and who pressed it by assistive
    // technology would wait for the answer.
    platform_.mainQueue.post(life_.guard([this] { confirmDeepClean(); }));
}

void Maintenance::confirmDeepClean()
{
    const std::size_t answer = platform_.alerts.runModal({ .title = "Compact OSTREL history?",
        .text
        = "Keep the latest 120 samples and retain a full backup. No processes, session files, swap or "
          "other apps' logs are changed. The backup retains the original data; total disk use may grow.",
        .buttons = { "Cancel", "Compact own history" },
        .cancel = 0 });
    if (answer == 1)
        runMaintenance(historyCommand, true);
}

void Maintenance::runMaintenance(std::string_view command, bool apply)
{
    if (!cleanupRunning_.empty() || snapshots_.isFetchingPythonData())
        return report("Wait for the current snapshot or maintenance operation to finish.");
    const std::string_view key = keyOf(command, apply);
    cleanupRunning_.emplace(key);
    report(fmt::format("{} {}", nowStr(), apply ? "compacting own history…" : "read-only audit…"));
    renderBody();
    std::vector<std::string> arguments { snapshots_.pyPath(), std::string(command) };
    if (apply)
        arguments.emplace_back("--apply");
    // Key and command are constants, so the views of them outlive the run.
    const auto deliver
        = life_.guard([this, key, command, generation = snapshots_.generation()](
                          const CollectorResult& result) { receive(key, command, generation, result); });
    platform_.globalQueue.async(platform::QueuePriority::utility,
        [runner = runner_, arguments, deliver, &mainQueue = platform_.mainQueue] {
            auto result = std::make_shared<CollectorResult>(runner->run({ .arguments = arguments }));
            mainQueue.post([deliver, result] { deliver(*result); });
        });
}

void Maintenance::receive(
    std::string_view key, std::string_view command, std::int64_t generation, const CollectorResult& result)
{
    if (generation != snapshots_.generation())
        return;
    if (const auto running = cleanupRunning_.find(key); running != cleanupRunning_.end())
        cleanupRunning_.erase(running);
    cleanupLastResult_ = maintenanceResult(command, result);
    report(fmt::format("{} {}", nowStr(), cleanupLastResult_));
    renderBody();
}

void Maintenance::report(std::string line)
{
    cleanupReport_.push_back(std::move(line));
    while (cleanupReport_.size() > longestReport)
        cleanupReport_.pop_front();
    if (body_ && body_->shown() && body_->mode() == OstrelMode::diagnosis)
        body_->renderBodyThrottled(true);
}

std::string Maintenance::nowStr() const { return localClockText(platform_.clock.now()); }

void Maintenance::panelDidClose() { cleanupRunning_.clear(); }

void Maintenance::renderBody()
{
    if (body_)
        body_->renderBody();
}

} // namespace ostrel
