// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"
#include "platform/MainQueue.h"

#include <memory>

class QWidget;

namespace platform {

/// A side of a rectangle.
enum class Edge { left, bottom, right, top };

/// Something on screen that a popover can hang from.
class AnchorView {
public:
    virtual ~AnchorView() = default;

    /// All of it, in coordinates of its own.
    [[nodiscard]] virtual Rect bounds() const = 0;
    /// A rectangle of its own coordinates in global ones.
    [[nodiscard]] virtual Rect onScreen(const Rect& rect) const = 0;
};

/// A borderless window that hangs from a place on screen. Main thread.
class Popover {
public:
    virtual ~Popover() = default;

    /// What it holds, at the size that the view has been given; the popover takes the view over and drops the
    /// one before in a later turn of the loop. An open popover goes on with the new view. The view is a
    /// toolkit's and nothing here looks into it.
    virtual void setContentView(QWidget* view) = 0;

    /// Gives everything in it its place, so that the first picture is right.
    virtual void layoutContent() = 0;

    /// Whether it moves as it comes and goes.
    virtual void setAnimates(bool animates) = 0;

    /// Whether it closes by itself when the user turns to another program, where the desktop can't be
    /// watched for presses outside.
    virtual void setTransient(bool transient) = 0;

    /// Shows it beside `rect`, which is in the view's coordinates: at that edge, or at the opposite one where
    /// there is no room, and always inside the free area of the display.
    virtual void show(const Rect& rect, const AnchorView& view, Edge preferredEdge) = 0;

    [[nodiscard]] virtual bool isShown() const = 0;

    /// Takes it off the screen. It may call its owner back before this returns.
    virtual void performClose() = 0;
    /// The same without any movement.
    virtual void close() = 0;

    /// Called once after each close, whoever asked for it.
    virtual void setOnDidClose(Job didClose) = 0;

    /// Brings it to the front and gives it the keyboard.
    virtual void makeKey() = 0;
    /// Whether the keys go to it, or to something that stands over it.
    [[nodiscard]] virtual bool isKey() const = 0;
};

/// Makes popovers. Main thread.
class Popovers {
public:
    virtual ~Popovers() = default;

    /// Not shown; its corners are round by that radius, in points.
    [[nodiscard]] virtual std::unique_ptr<Popover> makePopover(double cornerRadius) = 0;
};

} // namespace platform
