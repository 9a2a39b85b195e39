// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace platform {

/// Tells the desktop how a small window that floats above all others is to be treated. Main thread.
class FloatingWindows {
public:
    virtual ~FloatingWindows() = default;

    /// On every workspace, in no list of windows, and with corners that are round to the pixel, where the
    /// toolkit's own are round to the point. `cornerRadius` in points. Call it before each showing, since
    /// hiding a window clears what was asked. Does nothing where there is nobody to tell.
    virtual void prepare(QWidget& window, double cornerRadius) = 0;

    /// Takes the keyboard, in answer to a press into the window.
    virtual void takeKeyboard(QWidget& window) = 0;
};

} // namespace platform
