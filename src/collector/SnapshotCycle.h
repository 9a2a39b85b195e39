// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/CollectorRunner.h"
#include "collector/OstrelData.h"
#include "core/LifeToken.h"
#include "core/PanelBody.h"
#include "core/Readout.h"
#include "platform/Bundle.h"
#include "platform/Clock.h"
#include "platform/FileManager.h"
#include "platform/GlobalQueue.h"
#include "platform/Timer.h"
#include "readings/NativeTick.h"
#include "readings/TickSink.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// Fetches a full snapshot from the collector script while the panel is open, and only then: at once, then at
/// each panel interval, one child at a time. What came last survives failures and closings. Main thread.
class SnapshotCycle final : public RefreshListener {
public:
    /// What the cycle asks of the platform; all of it must outlive the cycle.
    struct Platform {
        platform::RunLoop& loop;
        platform::MainQueue& mainQueue;
        platform::GlobalQueue& globalQueue;
        platform::FileManager& files;
        platform::Bundle& bundle;
        platform::Clock& clock;
    };

    /// `runner` is shared with the other commands that run the collector's script; the tick tells the
    /// intervals.
    SnapshotCycle(const Platform& platform, std::shared_ptr<CollectorRunner> runner, const NativeTick& tick);

    /// Connects the panel, which must outlive the cycle. Without one the cycle only keeps state.
    void connect(PanelBody& body, Readout& readout);
    /// Tells whether other work on the collector runs; a fetch meanwhile is skipped.
    void setBusy(std::function<bool()> busy);

    /// Whether the script stands where it should; sets `backendState`.
    void ensureCollectorAvailable();
    /// Fetches at once and then at each panel interval.
    void startPanelPolling();
    /// One guarded attempt: does nothing while one is on its way.
    void fetchPythonData();
    /// The panel has closed: no timer, no child, and no answer of the child that still ran.
    void panelDidClose();
    /// The application ends: no further fetch.
    void invalidateTimer();
    /// Restarts the timer of an open panel with the new interval.
    void profileChanged() override;

    /// Takes a snapshot, or none, and what is said of it, as if a fetch had brought them. Draws nothing.
    void show(std::optional<OstrelData> data, std::string_view source, std::string_view state);

    /// Where the script stands, or would stand.
    [[nodiscard]] std::string pyPath() const;
    /// Raised by each closing; an answer from before it is void.
    [[nodiscard]] std::int64_t generation() const { return generation_; }
    [[nodiscard]] bool isFetchingPythonData() const { return isFetchingPythonData_; }
    /// The last good snapshot; a failure doesn't clear it.
    [[nodiscard]] const std::optional<OstrelData>& lastData() const { return lastData_; }
    /// Its bytes as the script printed them.
    [[nodiscard]] const std::optional<std::string>& lastSnapshotJSON() const { return lastSnapshotJSON_; }
    [[nodiscard]] const std::optional<platform::Instant>& lastSnapshotAt() const { return lastSnapshotAt_; }
    /// Seconds that the last run took, failed or not.
    [[nodiscard]] double collectorLatency() const { return collectorLatency_; }
    /// One line on how the collector does.
    [[nodiscard]] const std::string& backendState() const { return backendState_; }
    /// "native" before the first answer, then "local CLI" or "error".
    [[nodiscard]] const std::string& backendLastSource() const { return backendLastSource_; }

    /// Whether what is shown should no longer be taken for the present.
    [[nodiscard]] bool snapshotIsStale() const;
    /// For instance "12s ago"; nothing before the first good answer.
    [[nodiscard]] std::optional<std::string> snapshotAgeText() const;

private:
    /// What a run gave, judged off the main thread.
    struct Answer {
        CollectorResult result;
        std::optional<OstrelData> data; ///< absent when the answer isn't a snapshot
    };

    static Answer judged(CollectorResult result);
    void fetchPythonDataViaCommand();
    void receive(std::int64_t generation, Answer answer);
    [[nodiscard]] bool bodyShowsSnapshot() const;

    Platform platform_;
    std::shared_ptr<CollectorRunner> runner_;
    const NativeTick& tick_;
    PanelBody* body_ = nullptr;
    Readout* readout_ = nullptr;
    std::function<bool()> busy_;
    std::unique_ptr<platform::Timer> panelTimer_;
    bool isFetchingPythonData_ = false;
    std::int64_t generation_ = 0;
    std::optional<OstrelData> lastData_;
    std::optional<std::string> lastSnapshotJSON_;
    std::optional<platform::Instant> lastSnapshotAt_;
    double collectorLatency_ = 0;
    std::string backendState_ = "collector idle";
    std::string backendLastSource_ = "native";
    LifeToken life_;
};

} // namespace ostrel
