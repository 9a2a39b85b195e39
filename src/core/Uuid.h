// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace ostrel {

/// A fresh random identifier in the usual form of 36 characters, with upper-case letters. Any thread.
[[nodiscard]] std::string freshUuid();

} // namespace ostrel
