// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelController.h"

#include "core/Iso8601.h"
#include "panel/PanelScreen.h"
#include "panel/PanelSize.h"

#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

/// A popover that is still there so long after it was told to close is taken away outright.
constexpr platform::Seconds closePatience { 0.35 };
/// A window manager may pass a new window over; then the keyboard is asked for once more.
constexpr platform::Seconds keyPatience { 0.3 };
/// Between closing at one place and opening at the other.
constexpr platform::Seconds placeChangePause { 0.4 };

/// A place on screen that the panel hangs from, with nothing to see or to press there.
class AnchorPoint final : public platform::AnchorView {
public:
    explicit AnchorPoint(const platform::Rect& place)
        : place_(place)
    {
    }
    [[nodiscard]] platform::Rect bounds() const override { return { 0, 0, place_.width, place_.height }; }
    [[nodiscard]] platform::Rect onScreen(const platform::Rect& rect) const override
    {
        return { place_.x + rect.x, place_.y + rect.y, rect.width, rect.height };
    }

private:
    platform::Rect place_;
};

} // namespace

PanelController::PanelController(
    PanelContent& content, Settings& settings, const Services& services, Hooks hooks)
    : content_(content)
    , settings_(settings)
    , services_(services)
    , hooks_(std::move(hooks))
{
}

void PanelController::show() { showPopover(false); }

void PanelController::showPopover(bool testbed)
{
    if (!testbed)
        dismissTestbedAnchor();
    if (!hooks_.hasBarItem())
        return;
    hooks_.willShow(!shown());
    if (!popover_)
        buildPopover();
    ++showGeneration_;
    // Before it is shown: the first picture is the whole one.
    content_.renderBody();
    if (testbed)
        showAtTestbed();
    else
        showAtItsPlace();
    focusPanel();
    hooks_.opened();
}

void PanelController::showAtTestbed()
{
    const AnchorPoint anchor(PanelScreen::testbedAnchor(services_.screens));
    surface_->show(anchor.bounds(), &anchor, platform::Edge::top);
}

void PanelController::showAtItsPlace()
{
    const std::optional<platform::Rect> item = hooks_.barItemFrame();
    std::optional<platform::Point> center;
    if (item)
        center = platform::Point { item->x + item->width / 2, item->y + item->height / 2 };
    const auto place = PanelScreen::current(services_.screens, center);
    hooks_.placed(place ? fmt::format("{} · {}", place->screen.name, PanelScreen::name(place->anchor))
                        : std::string("no screen"));
    const bool fromItem = settings_.barDisplayMode != BarDisplayMode::hidden && item && place
        && std::holds_alternative<PanelScreen::BarItem>(place->anchor);
    const AnchorPoint anchor(fromItem ? *item
                                      : PanelScreen::hiddenModeAnchor(services_.screens,
                                          place ? std::optional(place->screen.visible) : std::nullopt));
    surface_->show(anchor.bounds(), &anchor, platform::Edge::bottom);
}

void PanelController::buildPopover()
{
    popover_ = services_.popovers.makePopover(panelCornerRadius);
    popover_->setContentView(content_.makeContent());
    popover_->setTransient(!settings_.pinned);
    popover_->setAnimates(!services_.workspace.accessibilityDisplayShouldReduceMotion());
    popover_->setOnDidClose([this] { popoverDidClose(); });
    surface_ = std::make_unique<ZOLSurface>(std::reference_wrapper<platform::Popover>(*popover_),
        settings_.pinned, services_.events, services_.workspace);
    surface_->setOnClose([this](ZOLSurface::CloseReason reason) { recordClose(reason); });
}

void PanelController::focusPanel()
{
    const auto focus = [this] {
        popover_->makeKey();
        content_.takeKeys();
    };
    focus();
    services_.mainQueue.postAfter(keyPatience, life_.guard([this, focus] {
        if (shown() && !popover_->isKey())
            focus();
    }));
}

void PanelController::takeKeys()
{
    if (!shown())
        return;
    if (!popover_->isKey())
        popover_->makeKey();
    content_.takeKeys();
}

void PanelController::close(std::string_view reason)
{
    if (!shown())
        return;
    pendingCloseReason_ = reason;
    surface_->close(closeReason(reason));
    if (popover_->isShown())
        popover_->performClose();
    services_.mainQueue.postAfter(closePatience, life_.guard([this, generation = showGeneration_] {
        if (generation == showGeneration_ && shown())
            popover_->close();
    }));
}

ZOLSurface::CloseReason PanelController::closeReason(std::string_view text)
{
    using enum ZOLSurface::CloseReason;
    if (text == "esc" || text == "esc-field")
        return escape;
    if (text == "cmd-w")
        return commandW;
    if (text == "x")
        return closeButton;
    if (text == "bar-or-hotkey")
        return menuBarItem;
    return text == "outside-click" ? outsideClick : route;
}

void PanelController::recordClose(ZOLSurface::CloseReason reason)
{
    const bool bySystem = reason == ZOLSurface::CloseReason::host;
    const std::string text
        = std::exchange(pendingCloseReason_, std::nullopt)
              .value_or(std::string(bySystem ? "system-transient" : ZOLSurface::rawValue(reason)));
    services_.defaults.setText(lastCloseKey, fmt::format("{} {}", text, iso8601(services_.clock.now())));
}

void PanelController::popoverDidClose()
{
    lastPopoverClose_ = services_.clock.now();
    // Where the close didn't come through the surface, this is what records it.
    surface_->close(ZOLSurface::CloseReason::host);
    hooks_.applyBarLength();
    dismissTestbedAnchor();
    hooks_.closed();
    content_.dismissHelpOverlay(false);
}

void PanelController::toggle()
{
    if (shown())
        close("bar-or-hotkey");
    else
        show();
}

void PanelController::showTestbed()
{
    if (!shown()) {
        testbedActive_ = true;
        showPopover(true);
        return;
    }
    if (testbedActive_)
        return;
    testbedActive_ = true;
    close("testbed-reshow");
    services_.mainQueue.postAfter(placeChangePause, life_.guard([this] {
        testbedActive_ = true;
        showPopover(true);
    }));
}

void PanelController::setPinned(bool pinned)
{
    settings_.storePinned(pinned);
    if (popover_)
        popover_->setTransient(!pinned);
    content_.showPinned(pinned);
    if (surface_)
        surface_->setPinned(pinned);
}

void PanelController::takeDown()
{
    surface_.reset();
    popover_.reset();
}

void PanelController::rebuildContent()
{
    if (!popover_)
        return;
    popover_->setContentView(content_.makeContent());
    content_.renderBody();
    if (shown())
        focusPanel();
}

} // namespace ostrel
