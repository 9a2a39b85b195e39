// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/Menu.h"

#include <memory>

class QMenu;

namespace platform {

/// The rows as a menu of the toolkit's. Their actions run through `queue`, which must outlive the menu.
[[nodiscard]] std::unique_ptr<QMenu> makeMenu(const Menu& rows, MainQueue& queue);

} // namespace platform
