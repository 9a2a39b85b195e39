// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAccessible>

class QWidget;

namespace ostrel {

/// Tells assistive technology what a view of our own drawing is. A button of that role can be pressed.
/// Before the view is first asked about.
void setAccessibleRole(QWidget& view, QAccessible::Role role);

/// Whether the view is the chosen one of its kind.
void setAccessibleSelected(QWidget& view, bool selected);

} // namespace ostrel
