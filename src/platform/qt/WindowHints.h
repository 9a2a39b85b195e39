// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace platform {

/// Keeps a window out of the desktop's taskbar and pager: the kind of window alone doesn't, on several
/// desktops. Call it before each showing, since hiding a window clears what was asked. Does nothing without
/// an X display.
void keepOutOfTaskbar(QWidget& window);

/// The same, and on every workspace, above the other windows.
void floatEverywhere(QWidget& window);

} // namespace platform
