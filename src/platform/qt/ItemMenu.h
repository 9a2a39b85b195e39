// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/Menu.h"

#include <memory>

class QMenu;
class QPoint;

namespace platform {

/// The rows as a menu of the toolkit's. Their actions run through `queue`, which must outlive the menu.
[[nodiscard]] std::unique_ptr<QMenu> makeMenu(const Menu& rows, MainQueue& queue);

/// Opens the menu there, in the toolkit's coordinates, and takes pointer and keys as soon as nobody else has
/// them: some hosts call while their own button is down, and without the pointer the menu would stay open
/// through a press elsewhere.
void popUp(QMenu& menu, const QPoint& place);

} // namespace platform
