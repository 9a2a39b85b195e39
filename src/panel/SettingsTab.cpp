// SPDX-License-Identifier: Apache-2.0
#include "panel/SettingsTab.h"

#include "design/controls/TabLayout.h"
#include "janitor/JanitorSettingsView.h"
#include "panel/PanelSize.h"

#include <QVBoxLayout>

namespace ostrel {

namespace {

constexpr int spacing = 12;

} // namespace

void renderSettings(QVBoxLayout& body, JanitorTab& janitor)
{
    body.setSpacing(spacing);
    body.addWidget(janitorSettingsView(janitor, contentWidth));
    body.addWidget(separator(contentWidth));
}

} // namespace ostrel
