// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "panel/SettingsText.h"

#include <functional>
#include <vector>

class QWidget;

namespace ostrel {

class OstrelButton;

/// A button of the settings as its words say. The handler may delete it.
[[nodiscard]] OstrelButton* settingsButton(const SettingsButton& words, std::function<void()> handler);

/// Views side by side from the left edge, as wide as a tab.
[[nodiscard]] QWidget* settingsRow(const std::vector<QWidget*>& views, int spacing);

} // namespace ostrel
