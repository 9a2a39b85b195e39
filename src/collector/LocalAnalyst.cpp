// SPDX-License-Identifier: Apache-2.0
#include "collector/LocalAnalyst.h"

#include <utility>

#include <fmt/format.h>

namespace ostrel {

LocalAnalyst::LocalAnalyst(const Platform& platform, std::shared_ptr<CollectorRunner> runner,
    SnapshotCycle& snapshots, Maintenance& maintenance)
    : platform_(platform)
    , runner_(std::move(runner))
    , snapshots_(snapshots)
    , maintenance_(maintenance)
{
}

void LocalAnalyst::runDiagnosis()
{
    if (diagnosisRunning_)
        return;
    diagnosisRunning_ = true;
    diagnosis_ = {};
    renderBody();
    snapshots_.ensureCollectorAvailable();
    runDiagnosisViaCommand();
}

void LocalAnalyst::runDiagnosisViaCommand()
{
    const auto& snapshot = snapshots_.lastSnapshotJSON();
    if (!snapshot) {
        diagnosisRunning_ = false;
        diagnosis_.text = "Wait for a snapshot first.";
        return renderBody();
    }
    const auto deliver
        = life_.guard([this, generation = snapshots_.generation()](const CollectorResult& result) {
              if (generation == snapshots_.generation())
                  applyDiagnosisOutput(result);
          });
    platform_.globalQueue.async(platform::QueuePriority::utility,
        [runner = runner_, path = snapshots_.pyPath(), input = *snapshot, deliver,
            &mainQueue = platform_.mainQueue] {
            auto result = std::make_shared<CollectorResult>(
                runner->run({ .arguments = { path, "analyze", "--stdin" }, .input = input }));
            mainQueue.post([deliver, result] { deliver(*result); });
        });
}

void LocalAnalyst::applyDiagnosisOutput(const CollectorResult& result)
{
    diagnosisRunning_ = false;
    diagnosis_ = readDiagnosis(result.data, result.status, snapshots_.backendLastSource());
    if (body_ && body_->mode() == OstrelMode::diagnosis)
        body_->renderBody();
}

void LocalAnalyst::execDiagAction(std::size_t at)
{
    if (at >= diagnosis_.actions.size())
        return;
    // A copy in a turn of its own: until then and while the alert stands another run may replace the
    // suggestions, and the control that asks may go.
    platform_.mainQueue.post(
        life_.guard([this, action = diagnosis_.actions[at]] { executeDiagAction(action); }));
}

void LocalAnalyst::executeDiagAction(const DiagAction& action)
{
    (void)platform_.alerts.runModal({ .title = action.label,
        .text = action.reason
            + "\n\nInspection only. No process was terminated and no app was closed. RSS is an observed "
              "footprint, not a guaranteed saving.",
        .buttons = { "OK" } });
    maintenance_.report(
        fmt::format("{} inspected {}; 0 processes terminated", maintenance_.nowStr(), action.label));
}

void LocalAnalyst::renderBody()
{
    if (body_)
        body_->renderBody();
}

} // namespace ostrel
