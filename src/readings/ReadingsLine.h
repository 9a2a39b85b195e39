// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "readings/NativeStats.h"

#include <string>

namespace ostrel {

/// One reading as a single line of JSON without a line break; `cpu` in percent. The same in every locale.
[[nodiscard]] std::string readingsLine(const NativeStats& stats, double cpu);

} // namespace ostrel
