// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtFloatingWindows.h"

#include "platform/qt/WindowHints.h"

namespace platform {

void QtFloatingWindows::prepare(QWidget& window) { floatEverywhere(window); }

} // namespace platform
