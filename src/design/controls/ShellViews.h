// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ThemedColor.h"

#include <QFont>
#include <QString>

#include <functional>

class QWidget;

namespace ostrel {

class ZOLShellLabel;

namespace ZOLAppShellStyle {

/// The face that the shell writes in, by size in points and weight; an application may put its own here
/// before it builds views. Main thread.
extern std::function<QFont(double, QFont::Weight)> font;

/// A label of one line in that face, as wide as its text.
[[nodiscard]] ZOLShellLabel* label(
    const QString& text, double size, QFont::Weight weight, const ThemedColor& color);

/// An empty view that takes up the room that is left in a row.
[[nodiscard]] QWidget* spacer();

} // namespace ZOLAppShellStyle

} // namespace ostrel
