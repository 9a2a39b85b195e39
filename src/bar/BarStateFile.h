// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/FileManager.h"

#include <optional>
#include <string>

namespace ostrel {

/// Where the bar item's state file stands, as a full path.
[[nodiscard]] std::string barStateFile(const platform::FileManager& files);

/// The file's text without blanks and line breaks at both ends; nothing when it can't be read.
[[nodiscard]] std::optional<std::string> readBarState(const platform::FileManager& files);

} // namespace ostrel
