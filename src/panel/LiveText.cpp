// SPDX-License-Identifier: Apache-2.0
#include "panel/LiveText.h"

#include "core/Text.h"

#include <cstdint>

#include <fmt/format.h>

namespace ostrel::LiveText {

std::string cpu(double percent) { return fmt::format("{}%", rounded(percent)); }

std::string memory(const NativeStats& native) { return fmt::format("{:.1f} GB", native.usedGB()); }

std::string memoryShare(const NativeStats& native)
{
    return fmt::format("{}% of {} GB", native.memPct(), rounded(native.totalGB()));
}

std::string swap(const NativeStats& native) { return memLabel(static_cast<std::int64_t>(native.swapUsedMB)); }

std::string swapShare(const NativeStats& native)
{
    return fmt::format("{}% allocated · retained", native.swapPct());
}

std::string free(const NativeStats& native) { return memLabel(native.freeMB) + " free"; }

std::string snapshotAge(std::string_view age) { return fmt::format("collector snapshot · {}", age); }

} // namespace ostrel::LiveText
