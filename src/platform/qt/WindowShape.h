// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <vector>

#include <xcb/xcb.h>

namespace platform {

/// The pixels of a rectangle with round corners at (0, 0), as few stripes from the top down.
[[nodiscard]] std::vector<xcb_rectangle_t> roundedStripes(int width, int height, int radius);

/// Leaves of a window only these pixels, for the eye and for the mouse. It may not be shown yet. Nothing
/// happens where the display can't do that.
void cutWindow(xcb_connection_t* connection, xcb_window_t window, std::span<const xcb_rectangle_t> stripes);

/// Lets presses through to what lies below, except on these pixels.
void limitInput(xcb_connection_t* connection, xcb_window_t window, std::span<const xcb_rectangle_t> stripes);

} // namespace platform
