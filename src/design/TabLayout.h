// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QFont>
#include <QString>

class QFrame;
class QLabel;
class QWidget;

namespace ostrel {

/// A label that breaks between words, as high as its text needs, `width` wide; 0 leaves the width to the
/// layout. The text is shown as it is, never as markup.
[[nodiscard]] QLabel* wrappingLabel(
    const QString& text, const QFont& font, const QColor& color, int width = 0);

/// A label of one line, as wide as its text.
[[nodiscard]] QLabel* lineLabel(const QString& text, const QFont& font, const QColor& color);

/// A one-pixel horizontal rule.
[[nodiscard]] QFrame* separator(const QColor& color);

} // namespace ostrel
