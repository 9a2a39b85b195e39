// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QKeyEvent>

namespace ostrel {

/// Whether the key presses the view that has the keyboard: space, return, or the keypad's enter.
[[nodiscard]] inline bool isPressKey(const QKeyEvent& event)
{
    return event.key() == Qt::Key_Space || event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

} // namespace ostrel
