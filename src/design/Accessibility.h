// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAccessible>

class QString;
class QWidget;

namespace ostrel {

/// Tells assistive technology what a view of our own drawing is. A button of that role can be pressed.
/// Before the view is first asked about.
void setAccessibleRole(QWidget& view, QAccessible::Role role);

/// What the view shows at present, in words.
void setAccessibleValue(QWidget& view, const QString& words);

/// The same for a view that shows a level between 0 and 100.
void setAccessibleLevel(QWidget& view, double level, const QString& words);

/// The view has a menu of its own, which it opens at a context menu event. After it has been told its role.
void setAccessibleMenu(QWidget& view);

/// Whether the view is the chosen one of its kind.
void setAccessibleSelected(QWidget& view, bool selected);

} // namespace ostrel
