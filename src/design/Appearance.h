// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ThemedColor.h"
#include "design/ZOLThemePolicy.h"

#include <QColor>
#include <QPalette>

class QWidget;

namespace ostrel {

/// The appearance that a view is drawn in: its own, or that of the nearest view around it that has one, or
/// the application's. Main thread.
[[nodiscard]] ZOLThemePolicy::Mode appearanceOf(const QWidget& view);

/// A themed colour as the view shows it. Views ask while they paint, since a change of theme repaints them.
[[nodiscard]] QColor resolved(const ThemedColor& color, const QWidget& view);

/// Gives a view and all in it an appearance of their own.
void setAppearance(QWidget& view, ZOLThemePolicy::Mode mode);

namespace ZOLThemePolicy {

/// The toolkit's colours in that mode, so that nothing of the desktop's own theme shows through.
[[nodiscard]] QPalette appearance(Mode mode);

/// Gives the whole application that appearance.
void apply(Mode mode);

/// Makes a view stand on a light plate with round corners, whatever the theme. Once per view.
void plate(QWidget& view);

} // namespace ZOLThemePolicy

} // namespace ostrel
