// SPDX-License-Identifier: Apache-2.0
#include "panel/SettingsTab.h"

#include "automations/AutomationsSettingsView.h"
#include "design/controls/TabLayout.h"
#include "janitor/JanitorSettingsView.h"
#include "panel/PanelSize.h"

#include <QVBoxLayout>

namespace ostrel {

namespace {

constexpr int spacing = 12;

} // namespace

void renderSettings(QVBoxLayout& body, AutomationsTab& automations, JanitorTab& janitor)
{
    body.setSpacing(spacing);
    renderAutomationsSettings(body, automations, contentWidth);
    body.addSpacing(spacing);
    body.addWidget(janitorSettingsView(janitor, contentWidth));
    body.addWidget(separator(contentWidth));
}

} // namespace ostrel
