// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/PanelChoices.h"
#include "design/Theme.h"
#include "design/ZOLThemePolicy.h"
#include "panel/PanelController.h"
#include "platform/UserDefaults.h"

#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace ostrel {

/// Carries a choice of theme out on everything that is on screen, and hands a choice of pin on. Main thread.
class ThemeSwitch final : public PanelChoices {
public:
    ThemeSwitch(platform::UserDefaults& defaults, const Settings& settings, PanelController& panel);

    /// From now on a choice holds for this process and isn't stored.
    void setOffscreen() { offscreen_ = true; }

    /// Brings the application and the palette into the stored theme. The application object exists.
    void loadTheme();
    void setTheme(ZOLThemePolicy::Mode mode);
    /// Sets the theme that a button stands for; its identifier is "theme-" and the stored word.
    void selectTheme(std::string_view identifier);
    /// Called with each new theme, for windows of their own.
    void addListener(std::function<void(ZOLThemePolicy::Mode)> listener);

    [[nodiscard]] bool dark() const override;
    void setTheme(bool dark) override;
    [[nodiscard]] bool pinned() const override { return settings_.pinned; }
    void setPinned(bool pinned) override { panel_.setPinned(pinned); }

    /// The older palette, in step with the theme.
    [[nodiscard]] const UI& ui() const { return ui_; }

private:
    platform::UserDefaults& defaults_;
    const Settings& settings_;
    PanelController& panel_;
    bool offscreen_ = false;
    UI ui_;
    std::vector<std::function<void(ZOLThemePolicy::Mode)>> listeners_;
};

} // namespace ostrel
