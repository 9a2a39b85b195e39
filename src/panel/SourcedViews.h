// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "panel/SourcedRow.h"

class QWidget;

namespace ostrel {

class ZOLShellLabel;

/// A value with its source below it, and room to the next, as wide as a tab.
[[nodiscard]] QWidget* sourcedRow(const SourcedRow& row);

/// The line that says where what stands above comes from, of two lines at most; its tooltip has the source in
/// full.
[[nodiscard]] ZOLShellLabel* sourceView(const SourceLine& line, int width);

} // namespace ostrel
