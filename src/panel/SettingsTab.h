// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationsTab.h"
#include "bar/BarItem.h"
#include "bar/HotkeyController.h"
#include "hints/HintController.h"
#include "janitor/JanitorTab.h"
#include "panel/LiveRegistry.h"
#include "panel/PanelState.h"
#include "panel/ThemeSwitch.h"
#include "readings/NativeTick.h"

#include <functional>

class QVBoxLayout;

namespace ostrel {

/// Who carries out what the settings' own sections offer. All of it outlives the panel.
struct SettingsServices {
    BarItem& bar;
    NativeTick& tick;
    ThemeSwitch& theme;
    HotkeyController& hotkeys;
    HintController& hints;
    std::function<void()> toggleMotion;
    std::function<void()> renderBody;
};

/// Draws the settings into the body, section by section. What they tell of must outlive the body.
void renderSettings(QVBoxLayout& body, const PanelState& state, const SettingsServices& services,
    AutomationsTab& automations, JanitorTab& janitor, LiveRegistry& live);

} // namespace ostrel
