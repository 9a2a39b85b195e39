// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace platform {

/// Which of the toolkit's platforms to use: "xcb" where an X display answers (under Wayland too, since
/// placement, the pointer's position and monitors don't exist for its own clients), "wayland" where only that
/// is there, and "offscreen" without a display. The toolkit itself would end the process when a display
/// doesn't answer.
[[nodiscard]] std::string chooseQtPlatform();

} // namespace platform
