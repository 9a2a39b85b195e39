// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsSettingsView.h"

#include "automations/AutomationsTab.h"
#include "automations/AutomationsViews.h"
#include "design/controls/OstrelButton.h"

#include <QVBoxLayout>

namespace ostrel {

namespace {

constexpr int spacing = 4;

} // namespace

void renderAutomationsSettings(QVBoxLayout& body, AutomationsTab& tab, int width)
{
    const AutomationsSection section = tab.settingsSection();
    auto* view = new QWidget;
    view->setFixedWidth(width);
    auto* column = new QVBoxLayout(view);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing);
    addText(
        *column, section.title, width, { .size = 12, .color = OstrelStyle::ink, .weight = QFont::DemiBold });
    for (const std::string& note : section.notes)
        addText(*column, note, width, { .lines = 2 });
    for (const AutomationsSection::Lane& lane : section.lanes)
        addText(
            *column, lane.text, width, { .color = lane.observed ? OstrelStyle::muted : OstrelStyle::soft });
    column->addSpacing(spacing);
    column->addWidget(automationButton(section.receipts, [&tab] { tab.openReceipts(); }), 0, Qt::AlignLeft);
    body.addWidget(view);
}

} // namespace ostrel
