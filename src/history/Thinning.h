// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace ostrel {

/// Which of the values are worth drawing over a width in points, ascending. All of them, unless there are so
/// many that they can't be told apart: then the lowest and the highest of each half point, and the two at
/// the ends. So what is drawn stays bounded by the width, and no peak is lost. The values are numbers.
[[nodiscard]] std::vector<std::size_t> worthDrawing(std::span<const double> values, double width);

} // namespace ostrel
