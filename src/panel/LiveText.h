// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "readings/NativeStats.h"

#include <string>
#include <string_view>

/// The native values as labels show them. A tab writes them when it is drawn, and the tick afterwards.
namespace ostrel::LiveText {

[[nodiscard]] std::string cpu(double percent);
[[nodiscard]] std::string memory(const NativeStats& native);
[[nodiscard]] std::string memoryShare(const NativeStats& native);
[[nodiscard]] std::string swap(const NativeStats& native);
[[nodiscard]] std::string swapShare(const NativeStats& native);
[[nodiscard]] std::string free(const NativeStats& native);
/// `age` as in "12s ago".
[[nodiscard]] std::string snapshotAge(std::string_view age);

} // namespace ostrel::LiveText
