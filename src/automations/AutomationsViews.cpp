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

ZOLShellLabel* textLabel(std::string_view text, int width, const TextLook& look)
{
    auto* label = fixedLabel(utf16(text), look.size, look.weight, look.color, width);
    // Of a fixed size too: a page of open rows is laid out without asking each label how high it would be.
    if (look.lines > 1 && label->isCut()) {
        label->setMaximumLines(look.lines);
        label->setFixedHeight(label->heightForWidth(width));
    }
    return label;
}

void addText(QVBoxLayout& column, std::string_view text, int width, const TextLook& look)
{
    if (!text.empty())
        column.addWidget(textLabel(text, width, look));
}

} // namespace ostrel
