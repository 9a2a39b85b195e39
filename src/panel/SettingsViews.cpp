// SPDX-License-Identifier: Apache-2.0
#include "panel/SettingsViews.h"

#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "panel/PanelSize.h"

#include <QHBoxLayout>

#include <utility>

namespace ostrel {

OstrelButton* settingsButton(const SettingsButton& words, std::function<void()> handler)
{
    auto* button = new OstrelButton(utf16(words.title), words.width, std::move(handler));
    ostrelTip(button, utf16(words.tip));
    button->setObjectName(utf16(words.identifier));
    button->setActive(words.active);
    button->setEnabled(words.enabled);
    return button;
}

QWidget* settingsRow(const std::vector<QWidget*>& views, int spacing)
{
    auto* row = new QWidget;
    row->setFixedWidth(contentWidth);
    auto* across = new QHBoxLayout(row);
    across->setContentsMargins(0, 0, 0, 0);
    across->setSpacing(spacing);
    for (QWidget* view : views)
        across->addWidget(view);
    across->addStretch(1);
    return row;
}

} // namespace ostrel
