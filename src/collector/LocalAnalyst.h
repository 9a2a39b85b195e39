// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/CollectorRunner.h"
#include "collector/Diagnosis.h"
#include "collector/Maintenance.h"
#include "collector/SnapshotCycle.h"
#include "core/LifeToken.h"
#include "core/PanelBody.h"
#include "platform/Alerts.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace ostrel {

/// A second opinion on the snapshot in hand: the collector's script reads it again and says what it finds and
/// what to look at. Nothing on this path stops anything. Main thread.
class LocalAnalyst {
public:
    /// All of it must outlive the analyst.
    struct Platform {
        platform::MainQueue& mainQueue;
        platform::GlobalQueue& globalQueue;
        platform::Alerts& alerts;
    };

    /// Inspections are told to the maintenance report.
    LocalAnalyst(const Platform& platform, std::shared_ptr<CollectorRunner> runner, SnapshotCycle& snapshots,
        Maintenance& maintenance);

    /// Connects the panel, which must outlive this. Without one the runs only keep state.
    void connect(PanelBody& body) { body_ = &body; }

    /// Forgets the last result and runs the analyst over the snapshot; nothing while it runs.
    void runDiagnosis();
    /// Explains the suggestion at that place, in the next turn; nothing where there is none.
    void execDiagAction(std::size_t at);
    /// The panel has closed: the run that was on its way is forgotten.
    void panelDidClose() { diagnosisRunning_ = false; }

    [[nodiscard]] bool diagnosisRunning() const { return diagnosisRunning_; }
    /// What the last run came to; empty before the first and during a run.
    [[nodiscard]] const Diagnosis& diagnosis() const { return diagnosis_; }

private:
    void runDiagnosisViaCommand();
    void applyDiagnosisOutput(const CollectorResult& result);
    void executeDiagAction(const DiagAction& action);
    void renderBody();

    Platform platform_;
    std::shared_ptr<CollectorRunner> runner_;
    SnapshotCycle& snapshots_;
    Maintenance& maintenance_;
    PanelBody* body_ = nullptr;
    bool diagnosisRunning_ = false;
    Diagnosis diagnosis_;
    LifeToken life_;
};

} // namespace ostrel
