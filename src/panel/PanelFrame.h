// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/PanelBody.h"
#include "core/Readout.h"
#include "design/MotionServices.h"
#include "design/ThemedColor.h"
#include "panel/BodyScreen.h"
#include "panel/LiveRegistry.h"
#include "panel/PanelRootView.h"
#include "panel/PanelState.h"
#include "platform/Clock.h"

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

class QScrollArea;
class QVBoxLayout;

namespace ostrel {

class ZOLShellButton;
class ZOLShellLabel;

/// The panel's one frame: header, tab strip, readout, scrolling body, footer. The body is built anew from
/// state at each `renderBody`; before `makeContent` every call changes state only. Main thread.
class PanelFrame final : public PanelBody, public Readout {
public:
    static constexpr int panelWidth = 760;
    static constexpr int panelHeight = 700;
    static constexpr int contentWidth = 728;

    PanelFrame(const PanelState& state, const platform::Clock& clock, const MotionServices& motion,
        LiveRegistry& live);
    ~PanelFrame() override;

    /// Builds the frame; `close` gets the reason. The application object must exist.
    void makeContent(ZOLThemePolicy::Mode theme, std::function<void(std::string_view)> close);
    /// The frame's window; null before `makeContent`.
    [[nodiscard]] QWidget* rootView() const { return root_.get(); }
    /// Called after each rebuild, to fill in the live values.
    void setAfterRender(std::function<void()> afterRender);

    [[nodiscard]] OstrelMode mode() const override { return mode_; }
    [[nodiscard]] bool shown() const override;
    void renderBody() override;
    void renderBodyThrottled(bool force) override;
    void switchMode(OstrelMode mode) override;

    void set(std::string_view text) override;
    void refresh() override;

private:
    [[nodiscard]] QWidget* makeHeader(std::function<void(std::string_view)> close) const;
    [[nodiscard]] QWidget* makeFooter() const;
    [[nodiscard]] QWidget* makeStrip();
    [[nodiscard]] QWidget* makeBody();
    void renderScreen(QVBoxLayout& body, BodyScreen screen);
    void renderNotice(QVBoxLayout& body, std::string_view title, std::string_view text, bool retry);
    void renderTab(QVBoxLayout& body);
    void showReadout(std::string_view text, const ThemedColor& color);

    PanelState state_;
    const platform::Clock& clock_;
    MotionServices motion_;
    LiveRegistry& live_;
    OstrelMode mode_ = OstrelMode::overview;
    platform::Instant lastBodyRenderAt_ = platform::distantPast;
    std::function<void()> afterRender_;
    std::unique_ptr<PanelRootView> root_;
    std::vector<ZOLShellButton*> tabs_;
    ZOLShellLabel* readout_ = nullptr;
    QScrollArea* scroll_ = nullptr;
};

} // namespace ostrel
