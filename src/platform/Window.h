// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Clock.h"
#include "platform/Geometry.h"

namespace platform {

/// A window of the program. Main thread.
class Window {
public:
    virtual ~Window() = default;

    /// Gives everything in it its place, so that the first picture is right.
    virtual void layoutContent() = 0;
    /// Draws what has changed without waiting for the screen's next turn.
    virtual void display() = 0;

    /// Where it stands in global coordinates, or is on its way to.
    [[nodiscard]] virtual Rect frame() const = 0;
    /// At once; ends an animation.
    virtual void setFrame(const Rect& frame) = 0;
    /// From 0, invisible, to 1; at once; ends an animation. Desktops that can't blend show it whole.
    virtual void setAlpha(double alpha) = 0;
    /// Goes there from where it is, fast at first and slow at the end. Returns at once.
    virtual void animate(Seconds duration, double alpha, const Rect& frame) = 0;

    virtual void orderFront() = 0;
    /// Takes it off the screen. An animation jumps to its end.
    virtual void orderOut() = 0;
};

} // namespace platform
