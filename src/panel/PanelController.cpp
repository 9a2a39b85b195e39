// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelController.h"

#include "design/Appearance.h"
#include "design/OstrelStyle.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <utility>

namespace ostrel {

namespace {

/// Between the panel and the right edge of the screen's free area.
constexpr int edgeGap = 24;

} // namespace

PanelController::PanelController(PanelFrame& frame, const platform::UserDefaults& defaults, Hooks hooks)
    : frame_(frame)
    , defaults_(defaults)
    , hooks_(std::move(hooks))
{
}

void PanelController::show()
{
    if (!frame_.rootView()) {
        const ZOLThemePolicy::Mode theme = OstrelStyle::theme(defaults_);
        ZOLThemePolicy::apply(theme);
        frame_.makeContent(theme, [this](std::string_view reason) { close(reason); });
    }
    QWidget& window = *frame_.rootView();
    const bool wasShown = frame_.shown();
    frame_.renderBody();
    if (!wasShown) {
        place();
        hooks_.beforeShow(window);
        // Else the first tab would take the keyboard, and look chosen beside the one that is.
        window.setFocus();
    }
    window.show();
    window.raise();
    window.activateWindow();
    if (!wasShown)
        hooks_.opened();
}

void PanelController::close(std::string_view)
{
    if (!frame_.shown())
        return;
    frame_.rootView()->hide();
    hooks_.closed();
}

void PanelController::toggle()
{
    if (frame_.shown())
        close("bar-or-hotkey");
    else
        show();
}

void PanelController::place()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QRect free = screen->availableGeometry();
    QWidget& window = *frame_.rootView();
    window.move(free.right() + 1 - edgeGap - window.width(), free.top());
}

} // namespace ostrel
