// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ZOLThemePolicy.h"

#include <QColor>
#include <QFont>
#include <QPalette>

namespace ostrel {

/// The colours and the typeface that the system's own views draw with. Main thread, with an application
/// object.
class OstrelStyle {
public:
    explicit OstrelStyle(ZOLThemePolicy::Mode mode);

    QColor bg; ///< the panel's ground
    QColor ink; ///< text and figures
    QColor muted; ///< secondary text
    QColor hair; ///< separators and outlines
    QColor fill; ///< the ground of data
    QColor hover;
    QColor red; ///< the one signal colour

    static constexpr double radius = 8;

    /// The monospaced face in points, at least 10: nothing in the panel is smaller.
    [[nodiscard]] static QFont mono(double size, QFont::Weight weight = QFont::Normal);

    /// The colours as a palette for plain widgets, so that nothing of the desktop's own theme shows through.
    [[nodiscard]] QPalette palette() const;
};

} // namespace ostrel
