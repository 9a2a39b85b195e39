// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "automations/AutomationsText.h"
#include "design/OstrelStyle.h"
#include "design/ThemedColor.h"

#include <QFont>

#include <functional>
#include <string_view>

class QVBoxLayout;

namespace ostrel {

class OstrelButton;
class ZOLShellLabel;

/// A button of the automations'. The handler may delete it.
[[nodiscard]] OstrelButton* automationButton(const AutomationButton& button, std::function<void()> handler);

/// How a text is set.
struct TextLook {
    double size = 11;
    ThemedColor color = OstrelStyle::muted;
    int lines = 1; ///< at most
    QFont::Weight weight = QFont::Normal;
};

/// A text, `width` points wide and as high as it needs.
[[nodiscard]] ZOLShellLabel* textLabel(std::string_view text, int width, const TextLook& look = {});

/// Adds a text, `width` points wide; nothing for an empty one.
void addText(QVBoxLayout& column, std::string_view text, int width, const TextLook& look = {});

} // namespace ostrel
