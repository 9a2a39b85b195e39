// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>

namespace ostrel {

/// The instant as "YYYY-MM-DDTHH:MM:SSZ", in UTC, the fraction of its second cut off.
[[nodiscard]] std::string iso8601(std::chrono::system_clock::time_point instant);

} // namespace ostrel
