// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationsTab.h"
#include "collector/LocalAnalyst.h"
#include "collector/Maintenance.h"
#include "core/PanelBody.h"
#include "core/Readout.h"
#include "design/MotionServices.h"
#include "design/ThemedColor.h"
#include "design/ZOLThemePolicy.h"
#include "janitor/JanitorTab.h"
#include "panel/FocusMemory.h"
#include "panel/LiveRegistry.h"
#include "panel/LiveSessions.h"
#include "panel/PanelContent.h"
#include "panel/PanelState.h"
#include "panel/SettingsTab.h"
#include "panel/Workloads.h"
#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/ProcessInfo.h"
#include "sessions/RemoteServer.h"
#include "sessions/SessionPanel.h"

#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

class QScrollArea;
class QVBoxLayout;

namespace ostrel {

class PanelRootView;
class RetiredViews;
class ZOLAppHeader;
class ZOLShellLabel;
class ZOLTabStrip;

/// The panel's one frame: header, tab strip, readout, scrolling body, footer. The body is built anew from
/// state at each `renderBody`; before `makeContent` every call changes state only. Main thread.
class PanelFrame final : public PanelBody, public Readout, public PanelContent {
public:
    struct Services {
        const platform::Clock& clock;
        MotionServices motion;
        const platform::Alerts& alerts;
        const platform::UserDefaults& defaults; ///< holds the theme
        const platform::ProcessInfo& processInfo;
        LocalAnalyst& analyst;
        Maintenance& maintenance;
        JanitorTab& janitor;
        Workloads& workloads;
        AutomationsTab& automations;
        SessionPanel& terminals;
        LiveSessions& liveSessions;
        RemoteServer& server;
    };

    /// What the frame's controls lead to. Each must be there before `makeContent`.
    struct Actions {
        std::function<void(std::string_view reason)> close;
        std::function<void(bool)> setPinned;
        std::function<void(ZOLThemePolicy::Mode)> setTheme;
        std::function<void()> openCatalogue;
        std::function<void()> rendered; ///< after each rebuild, to set its gauges going
    };

    PanelFrame(PanelState state, const Services& services, LiveRegistry& live);
    ~PanelFrame() override;

    void setActions(Actions actions);
    /// Who carries out the settings; until then that tab is empty.
    void setSettings(const SettingsServices& settings);

    /// The frame; null before `makeContent` and once its owner has dropped it.
    [[nodiscard]] QWidget* rootView() const;

    [[nodiscard]] QWidget* makeContent() override;
    void renderBody() override;
    void takeKeys() override;
    void showPinned(bool pinned) override;
    bool dismissHelpOverlay(bool animated) override;

    [[nodiscard]] OstrelMode mode() const override { return mode_; }
    [[nodiscard]] bool shown() const override;
    void renderBodyThrottled(bool force) override;
    void switchMode(OstrelMode mode) override;

    void set(std::string_view text) override;
    void refresh() override;

    /// What its moving views ask of the system.
    [[nodiscard]] const MotionServices& motion() const { return services_.motion; }
    /// Nothing in it moves by itself from the next `makeContent` on.
    void standStill() { services_.motion.selfTest = true; }

    /// Shows the overlay with the panel's keys, or takes it away.
    void showHelpOverlay();

private:
    [[nodiscard]] QWidget* makeHeader();
    void installHeaderCharacter(ZOLAppHeader& header) const;
    [[nodiscard]] QWidget* makeStrip();
    [[nodiscard]] QWidget* makeBody();
    [[nodiscard]] QWidget* makeFooter() const;
    void fillBody(QVBoxLayout& body);
    /// The control that is to have the keyboard in the next body.
    [[nodiscard]] std::optional<FocusMemory> focusToKeep() const;
    void scrollBody(int place);
    void showReadout(std::string_view text, const ThemedColor& color);

    PanelState state_;
    Services services_;
    Actions actions_;
    std::optional<SettingsServices> settings_;
    LiveRegistry& live_;
    OstrelMode mode_ = OstrelMode::overview;
    platform::Instant lastBodyRenderAt_ = platform::distantPast;
    std::unique_ptr<RetiredViews> retired_;
    // Of a control that the keyboard left because it couldn't be used for a while.
    std::optional<FocusMemory> focusToReturn_;
    // Of the frame before the present one, until this one is drawn and has the keyboard.
    std::optional<FocusMemory> focusToRestore_;
    std::optional<int> scrollToRestore_;
    QPointer<PanelRootView> root_;
    QPointer<ZOLAppHeader> header_;
    QPointer<ZOLTabStrip> strip_;
    QPointer<ZOLShellLabel> readout_;
    QPointer<QScrollArea> scroll_;
};

} // namespace ostrel
