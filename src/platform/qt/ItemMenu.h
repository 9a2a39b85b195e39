// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"
#include "platform/MainQueue.h"
#include "platform/Menu.h"

#include <memory>

class QMenu;

namespace platform {

/// The rows as a menu of the toolkit's. Their actions run through `queue`, which must outlive the menu.
[[nodiscard]] std::unique_ptr<QMenu> makeMenu(const Menu& rows, MainQueue& queue);

/// The upper left corner, in global coordinates, of a menu that hangs from an item: below it, or above it in
/// the lower half of its screen.
[[nodiscard]] Point menuCorner(const Rect& item, const Rect& screen, double menuHeight);

} // namespace platform
