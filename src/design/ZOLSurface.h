// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/LifeToken.h"
#include "platform/EventMonitor.h"
#include "platform/Popover.h"
#include "platform/Window.h"
#include "platform/Workspace.h"

#include <functional>
#include <memory>
#include <string_view>
#include <variant>

namespace ostrel {

/// Whether a panel or a window is shown, and why it closed. The host and the other parts outlive it; its
/// callbacks may destroy it. Main thread.
class ZOLSurface final {
public:
    /// What is shown.
    using Host
        = std::variant<std::reference_wrapper<platform::Popover>, std::reference_wrapper<platform::Window>>;

    enum class CloseReason {
        escape,
        commandW,
        closeButton,
        menuBarItem,
        hotkey,
        route,
        outsideClick,
        host, ///< it closed by itself
    };

    /// The reason as it is written down.
    [[nodiscard]] static std::string_view rawValue(CloseReason reason);

    /// Not shown yet.
    ZOLSurface(Host host, bool pinned, platform::EventMonitor& events, const platform::Workspace& workspace);

    [[nodiscard]] bool isShown() const { return shown_; }

    [[nodiscard]] bool pinned() const { return pinned_; }
    /// A pinned surface stays open on a click outside. Takes effect at once.
    void setPinned(bool pinned);

    /// Called after each show.
    void setOnShow(std::function<void()> onShow);
    /// Called once after each close.
    void setOnClose(std::function<void(CloseReason)> onClose);

    /// How long it takes to appear, in seconds; 0 when the user wants no movement.
    [[nodiscard]] double appearDuration() const;

    /// Shows it, once. A popover hangs from `rect` in the view's coordinates, or from the whole view when
    /// that is zero, and isn't shown at all without a view; a window stands where it stood and looks at none
    /// of these.
    void show(const platform::Rect& rect, const platform::AnchorView* view, platform::Edge preferredEdge);

    /// Nothing while it isn't shown.
    void close(CloseReason reason);

private:
    void show(platform::Window& window) const;
    void updateMonitor();

    Host host_;
    platform::EventMonitor& events_;
    const platform::Workspace& workspace_;
    std::function<void()> onShow_;
    std::function<void(CloseReason)> onClose_;
    std::unique_ptr<platform::Observation> monitor_;
    bool shown_ = false;
    bool pinned_;
    LifeToken life_;
};

} // namespace ostrel
