// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace platform {

/// The first 4 KiB of a file of the kernel's or of /etc; nothing when it can't be opened or read.
[[nodiscard]] std::optional<std::string> readSmallFile(const std::string& path);

} // namespace platform
