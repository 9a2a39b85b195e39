// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/Settings.h"
#include "core/LifeToken.h"
#include "core/PanelDoor.h"
#include "design/ZOLSurface.h"
#include "panel/PanelContent.h"
#include "platform/Clock.h"
#include "platform/EventMonitor.h"
#include "platform/MainQueue.h"
#include "platform/Popover.h"
#include "platform/Screens.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// Opens and closes the panel, and keeps why it closed. The popover is built at the first opening and kept;
/// closing only hides it. Main thread.
class PanelController final : public PanelDoor {
public:
    static constexpr std::string_view lastCloseKey = "ostrel.lastClose";

    /// All of it outlives the controller.
    struct Services {
        platform::Popovers& popovers;
        platform::EventMonitor& events;
        const platform::Workspace& workspace;
        const platform::Screens& screens;
        platform::UserDefaults& defaults;
        platform::MainQueue& mainQueue;
        const platform::Clock& clock;
    };

    /// Each must be there.
    struct Hooks {
        std::function<bool()> hasBarItem; ///< without one the panel doesn't open
        std::function<std::optional<platform::Rect>()> barItemFrame; ///< nothing while it has no window
        std::function<void(bool opening)> willShow; ///< not `opening` while it is on screen already
        std::function<void(std::string_view)> placed; ///< display and anchor of the opening at hand
        std::function<void()> opened; ///< the panel has come on screen, or was asked to once more
        std::function<void()> applyBarLength; ///< the bar may change its width again
        std::function<void()> closed; ///< the panel has gone
    };

    PanelController(PanelContent& content, Settings& settings, const Services& services, Hooks hooks);

    void show() override;
    void close(std::string_view reason) override;
    void toggle() override;
    void showTestbed() override;
    [[nodiscard]] bool shown() const override { return popover_ && popover_->isShown(); }
    [[nodiscard]] platform::Instant lastClose() const override { return lastPopoverClose_; }

    /// Makes an open panel the one that gets the keys.
    void takeKeys();
    /// Stores the pin. Takes effect at once.
    void setPinned(bool pinned);
    /// Builds the content anew, as after a change of theme. An open panel keeps its tab and the keyboard.
    /// Nothing before the first opening.
    void rebuildContent();

    /// Whether a popover was built.
    [[nodiscard]] bool built() const { return popover_ != nullptr; }
    /// Keeps the content in somebody else's popover from its next rebuilding on, or in none.
    void keepIn(std::unique_ptr<platform::Popover> popover) { popover_ = std::move(popover); }
    /// Drops the popover with all that is in it. No reason is kept: nobody closed the panel.
    void takeDown();

    /// The surface's reason for one of the texts that `close` is given.
    [[nodiscard]] static ZOLSurface::CloseReason closeReason(std::string_view text);

private:
    void showPopover(bool testbed);
    void showAtTestbed();
    void showAtItsPlace();
    void buildPopover();
    void recordClose(ZOLSurface::CloseReason reason);
    void popoverDidClose();
    void dismissTestbedAnchor() { testbedActive_ = false; }
    void focusPanel();

    PanelContent& content_;
    Settings& settings_;
    Services services_;
    Hooks hooks_;
    std::unique_ptr<platform::Popover> popover_;
    std::unique_ptr<ZOLSurface> surface_;
    platform::Instant lastPopoverClose_ = platform::distantPast;
    int showGeneration_ = 0; ///< counts the openings
    std::optional<std::string> pendingCloseReason_;
    bool testbedActive_ = false; ///< the panel is, or is about to be, away from the bar item
    LifeToken life_;
};

} // namespace ostrel
