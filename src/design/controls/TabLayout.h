// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ThemedColor.h"

#include <QFont>
#include <QString>

class QWidget;

namespace ostrel {

class ZOLShellLabel;

/// A label in the panel's font that breaks between words, as high as its text needs, `width` wide; 0 leaves
/// the width to the layout.
[[nodiscard]] ZOLShellLabel* wrappingLabel(
    const QString& text, double size, QFont::Weight weight, const ThemedColor& color, int width = 0);

/// A label in the panel's font of one line, as wide as its text.
[[nodiscard]] ZOLShellLabel* lineLabel(
    const QString& text, double size, QFont::Weight weight, const ThemedColor& color);

/// The same, but no wider than the room it gets: it ends in an ellipsis there.
[[nodiscard]] ZOLShellLabel* elidedLabel(
    const QString& text, double size, QFont::Weight weight, const ThemedColor& color);

/// A horizontal rule, one crisp line high; 0 leaves the width to the layout.
[[nodiscard]] QWidget* separator(int width = 0);

} // namespace ostrel
