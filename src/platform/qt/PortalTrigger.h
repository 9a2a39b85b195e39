// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/HotKeyCenter.h"

#include <string>

namespace platform {

/// The combination in the words of the shortcuts' portal: "ALT+LOGO+m", the key by the name that keyboard
/// layouts have for what it types.
[[nodiscard]] std::string portalTrigger(const HotKey& hotKey);

} // namespace platform
