// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace platform {

/// Tells the desktop how a small window that floats above all others is to be treated. Main thread.
class FloatingWindows {
public:
    virtual ~FloatingWindows() = default;

    /// On every workspace, and in no list of windows. Call it before each showing, since hiding a window
    /// clears what was asked. Does nothing where there is nobody to tell.
    virtual void prepare(QWidget& window) = 0;
};

} // namespace platform
