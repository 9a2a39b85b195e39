// SPDX-License-Identifier: Apache-2.0
#include "panel/ThemeSwitch.h"

#include "design/Appearance.h"
#include "design/OstrelStyle.h"

#include <utility>

namespace ostrel {

ThemeSwitch::ThemeSwitch(platform::UserDefaults& defaults, const Settings& settings, PanelController& panel)
    : defaults_(defaults)
    , settings_(settings)
    , panel_(panel)
{
}

void ThemeSwitch::addListener(std::function<void(ZOLThemePolicy::Mode)> listener)
{
    listeners_.push_back(std::move(listener));
}

void ThemeSwitch::loadTheme()
{
    ZOLThemePolicy::apply(OstrelStyle::theme(defaults_));
    ui_.setMode(OstrelStyle::mode(defaults_));
}

void ThemeSwitch::selectTheme(std::string_view identifier)
{
    constexpr std::string_view prefix = "theme-";
    if (identifier.starts_with(prefix))
        identifier.remove_prefix(prefix.size());
    setTheme(ZOLThemePolicy::resolve(identifier));
}

bool ThemeSwitch::dark() const { return OstrelStyle::theme(defaults_) == ZOLThemePolicy::Mode::dark; }

void ThemeSwitch::setTheme(bool dark)
{
    setTheme(dark ? ZOLThemePolicy::Mode::dark : ZOLThemePolicy::Mode::light);
}

void ThemeSwitch::setTheme(ZOLThemePolicy::Mode mode)
{
    if (offscreen_)
        OstrelStyle::override = mode;
    else
        ZOLThemePolicy::store(mode, defaults_, ZOLThemePolicy::key());
    loadTheme();
    for (const auto& listener : listeners_)
        listener(mode);
    panel_.rebuildContent();
}

} // namespace ostrel
