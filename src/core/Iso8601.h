// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>

namespace ostrel {

/// A time in UTC to the second, "2026-11-17T19:40:07Z".
[[nodiscard]] std::string iso8601(std::chrono::system_clock::time_point time);

} // namespace ostrel
