// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsViews.h"

#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"

#include <QVBoxLayout>

#include <utility>

namespace ostrel {

OstrelButton* automationButton(const AutomationButton& button, std::function<void()> handler)
{
    auto* view = new OstrelButton(utf16(button.title), button.width, std::move(handler));
    view->setActive(button.active);
    view->setEnabled(button.enabled);
    view->setToolTip(plainToolTip(utf16(button.toolTip)));
    view->setObjectName(utf16(button.identifier));
    return view;
}

void addText(QVBoxLayout& column, std::string_view text, int width, const TextLook& look)
{
    if (text.empty())
        return;
    if (look.lines == 1)
        return column.addWidget(fixedLabel(utf16(text), look.size, look.weight, look.color, width));
    auto* label = wrappingLabel(utf16(text), look.size, look.weight, look.color, width);
    label->setMaximumLines(look.lines);
    column.addWidget(label);
}

} // namespace ostrel
