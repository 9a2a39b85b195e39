// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLSurface.h"

#include "design/ZOLAppShellStyle.h"
#include "design/ZOLPinPolicy.h"

#include <utility>

namespace ostrel {

namespace {

platform::Popover* popover(const ZOLSurface::Host& host)
{
    const auto* held = std::get_if<std::reference_wrapper<platform::Popover>>(&host);
    return held ? &held->get() : nullptr;
}

platform::Window& window(const ZOLSurface::Host& host)
{
    return std::get<std::reference_wrapper<platform::Window>>(host);
}

} // namespace

std::string_view ZOLSurface::rawValue(CloseReason reason)
{
    switch (reason) {
    case CloseReason::escape:
        return "escape";
    case CloseReason::commandW:
        return "command-w";
    case CloseReason::closeButton:
        return "close-button";
    case CloseReason::menuBarItem:
        return "menu-bar-item";
    case CloseReason::hotkey:
        return "hotkey";
    case CloseReason::route:
        return "route";
    case CloseReason::outsideClick:
        return "outside-click";
    case CloseReason::host:
        break;
    }
    return "host";
}

ZOLSurface::ZOLSurface(
    Host host, bool pinned, platform::EventMonitor& events, const platform::Workspace& workspace)
    : host_(host)
    , events_(events)
    , workspace_(workspace)
    , pinned_(pinned)
{
}

void ZOLSurface::setPinned(bool pinned)
{
    pinned_ = pinned;
    updateMonitor();
}

void ZOLSurface::setOnShow(std::function<void()> onShow) { onShow_ = std::move(onShow); }

void ZOLSurface::setOnClose(std::function<void(CloseReason)> onClose) { onClose_ = std::move(onClose); }

double ZOLSurface::appearDuration() const
{
    const bool reduceMotion = workspace_.accessibilityDisplayShouldReduceMotion();
    return popover(host_) ? ZOLAppShellStyle::panelAppear(reduceMotion)
                          : ZOLAppShellStyle::windowAppear(reduceMotion);
}

void ZOLSurface::show(
    const platform::Rect& rect, const platform::AnchorView* view, platform::Edge preferredEdge)
{
    if (shown_)
        return;
    if (auto* const panel = popover(host_)) {
        if (!view)
            return;
        panel->layoutContent();
        panel->setAnimates(appearDuration() > 0);
        panel->show(rect == platform::Rect {} ? view->bounds() : rect, *view, preferredEdge);
    } else {
        show(window(host_));
    }
    shown_ = true;
    updateMonitor();
    // Copies here and below: the callback may destroy this, and itself with it.
    if (const auto onShow = onShow_)
        onShow();
}

void ZOLSurface::show(platform::Window& window) const
{
    window.layoutContent();
    window.display();
    const double duration = appearDuration();
    if (duration <= 0) {
        window.setAlpha(1);
        window.orderFront();
        return;
    }
    const platform::Rect frame = window.frame();
    platform::Rect lower = frame;
    lower.y -= ZOLAppShellStyle::windowAppearShift(workspace_.accessibilityDisplayShouldReduceMotion());
    window.setAlpha(0);
    window.setFrame(lower);
    window.orderFront();
    window.animate(platform::Seconds(duration), 1, frame);
}

void ZOLSurface::close(CloseReason reason)
{
    if (!shown_)
        return;
    shown_ = false;
    updateMonitor();
    if (auto* const panel = popover(host_))
        panel->performClose();
    else
        window(host_).orderOut();
    if (const auto onClose = onClose_)
        onClose(reason);
}

void ZOLSurface::updateMonitor()
{
    if (!ZOLPinPolicy::closesOnOutsideClick(pinned_, shown_))
        monitor_.reset();
    else if (!monitor_)
        monitor_ = events_.monitorMouseDown(life_.guard([this] { close(CloseReason::outsideClick); }));
}

} // namespace ostrel
