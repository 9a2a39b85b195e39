// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "panel/LiveRegistry.h"
#include "panel/SettingsText.h"

class QWidget;

namespace ostrel {

/// Shows the bar item as it looks now. Its value is registered under "bar-preview", and moves nothing around
/// it when it changes.
[[nodiscard]] QWidget* barPreviewRow(const BarPreview& words, LiveRegistry& live);

} // namespace ostrel
