// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace platform {

/// Whether the tray whose watcher runs as a program of this name writes an item's label beside its icon.
/// `program` is the kernel's short name, cut at 15 characters. Unknown ones don't: they show one picture.
[[nodiscard]] bool showsLabels(std::string_view program);

} // namespace platform
