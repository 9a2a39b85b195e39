// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/PlatformServices.h"
#include "automations/AutomationsTab.h"
#include "bar/AboutWindow.h"
#include "bar/BarItem.h"
#include "bar/BarPainter.h"
#include "bar/BarStateFile.h"
#include "bar/HotkeyController.h"
#include "bar/Routes.h"
#include "bar/ServiceMenu.h"
#include "bar/Settings.h"
#include "bar/SingleInstance.h"
#include "collector/CollectorRunner.h"
#include "collector/LocalAnalyst.h"
#include "collector/Maintenance.h"
#include "collector/SnapshotCycle.h"
#include "core/LifeToken.h"
#include "hints/HintController.h"
#include "hints/QtHintStage.h"
#include "history/OstrelHistory.h"
#include "janitor/JanitorTab.h"
#include "panel/LiveRegistry.h"
#include "panel/LiveSessions.h"
#include "panel/LiveValues.h"
#include "panel/PanelController.h"
#include "panel/PanelFrame.h"
#include "panel/ThemeSwitch.h"
#include "panel/Workloads.h"
#include "readings/CPUSampler.h"
#include "readings/NativeTick.h"
#include "sessions/RemoteServer.h"
#include "sessions/SessionPanel.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// The one application object: it makes every long-lived object once, wires them, and carries the start and
/// the end. Constructing it starts no timer, shows nothing and launches no child, so the command-line routes
/// run with an idle one. Main thread.
class AppDelegate final : private TickSink {
public:
    explicit AppDelegate(const PlatformServices& services);
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;
    ~AppDelegate() override;

    /// The start sequence; the event loop's application object exists. Opens what was wished for, or the
    /// panel. False when an elder instance runs: it has been told, nothing was started, and this process is
    /// to exit with 0.
    [[nodiscard]] bool applicationDidFinishLaunching(const LaunchWish& wish);
    /// The end: no further tick or fetch, the collector's children are asked to end, and all that the desktop
    /// had of this process goes. Children of other runners go on: what a user has confirmed isn't cut short,
    /// and a script that only reads ends by itself once nobody reads its answer. Waits for the collector's
    /// children, less than a second.
    void applicationWillTerminate();
    /// What can still be done when the toolkit ends the process by itself, since its display has gone. It is
    /// called on the way out, and touches no view and no bus. Nothing behind `applicationWillTerminate`.
    void processWillExit();

    /// The processor sampler that all of the process shares.
    [[nodiscard]] CPUSampler& cpuSampler() { return cpuSampler_; }
    [[nodiscard]] const PlatformServices& services() const { return services_; }
    [[nodiscard]] NativeTick& tick() { return tick_; }
    [[nodiscard]] SnapshotCycle& snapshots() { return snapshots_; }
    [[nodiscard]] PanelFrame& frame() { return frame_; }
    [[nodiscard]] PanelController& panel() { return panel_; }
    [[nodiscard]] ThemeSwitch& theme() { return theme_; }
    [[nodiscard]] JanitorTab& janitorTab() { return janitor_; }
    [[nodiscard]] AutomationsTab& automationsTab() { return automations_; }
    [[nodiscard]] SessionPanel& sessionPanel() { return terminals_; }
    [[nodiscard]] RemoteServer& server() { return server_; }
    [[nodiscard]] BarItem& barItem() { return barItem_; }
    [[nodiscard]] HintController& hints() { return hints_; }
    [[nodiscard]] Settings& settings() { return settings_; }
    [[nodiscard]] CollectorRunner& collector() { return *collector_; }
    [[nodiscard]] HotkeyController& hotkeys() { return hotkeys_; }
    [[nodiscard]] const OstrelHistory& history() const { return history_; }

    // Of a program that checks itself in place of the start sequence.

    /// From now on choices of theme and hotkey hold in memory alone, no sibling's settings are read, nothing
    /// moves by itself, and made-up answers may stand in for scripts. Before anything is drawn.
    void checkItself();
    /// Takes the minute history of the file, or a made-up one. Nothing of it is saved.
    void loadHistory();
    void showHistory(OstrelHistory history) { history_ = std::move(history); }

private:
    void recordMinute(const MinuteReading& reading) override;
    void updateStatusButton() override;
    void considerCompanion() override;
    [[nodiscard]] bool panelShown() const override;
    void refreshPanel() override;
    void panelDidClose();
    [[nodiscard]] std::optional<platform::Rect> hintAnchor() const;
    void panelPlaced(std::string_view text);
    /// Whether this process has to go; what there is to say has been printed then.
    [[nodiscard]] bool leavesToElder(const LaunchWish& wish);
    void listenToRoutes();

    PlatformServices services_;
    std::string historyFilePath_;
    OstrelHistory history_;
    CPUSampler cpuSampler_;
    NativeTick tick_;
    Settings settings_;
    std::shared_ptr<CollectorRunner> collector_;
    SnapshotCycle snapshots_;
    Maintenance maintenance_;
    LocalAnalyst analyst_;
    JanitorTab janitor_;
    Workloads workloads_;
    AutomationsTab automations_;
    SessionPanel terminals_;
    LiveSessions liveSessions_;
    RemoteServer server_;
    LiveRegistry liveRegistry_;
    PanelState panelState_;
    PanelFrame frame_;
    PanelController panel_;
    ThemeSwitch theme_;
    AboutWindow aboutWindow_;
    BarPainter barPainter_;
    BarStateFile barState_;
    BarItem barItem_;
    ServiceMenu serviceMenu_;
    Routes routes_;
    QtHintStage hintStage_;
    HintController hints_;
    HotkeyController hotkeys_;
    std::unique_ptr<platform::Observation> testbedObservation_;
    LiveValues liveValues_;
    LifeToken life_;
};

} // namespace ostrel
