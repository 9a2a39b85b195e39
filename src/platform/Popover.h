// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"

namespace platform {

/// A side of a rectangle.
enum class Edge { left, bottom, right, top };

/// Something on screen that a popover can hang from.
class AnchorView {
public:
    virtual ~AnchorView() = default;

    /// All of it, in coordinates of its own.
    [[nodiscard]] virtual Rect bounds() const = 0;
};

/// A borderless window that hangs from a place on screen. Main thread.
class Popover {
public:
    virtual ~Popover() = default;

    /// Gives everything in it its place, so that the first picture is right.
    virtual void layoutContent() = 0;

    /// Whether it moves as it comes and goes.
    virtual void setAnimates(bool animates) = 0;

    /// Shows it beside `rect`, which is in the view's coordinates, at that edge where there is room.
    virtual void show(const Rect& rect, const AnchorView& view, Edge preferredEdge) = 0;

    /// Takes it off the screen. It may call its owner back before this returns.
    virtual void performClose() = 0;
};

} // namespace platform
