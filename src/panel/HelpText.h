// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace ostrel {

/// The rows of the help overlay, top to bottom. The first is the heading; a row without keys is one blank.
[[nodiscard]] std::vector<std::string> helpRows();

} // namespace ostrel
