// SPDX-License-Identifier: Apache-2.0
#include "readings/ReadingsLine.h"

#include "core/Text.h"

#include <fmt/format.h>

namespace ostrel {

std::string readingsLine(const NativeStats& stats, double cpu)
{
    return fmt::format(R"({{ "memUsedGB": {:.3f}, "memTotalGB": {:.3f}, "memPct": {}, "freeMB": {}, )"
                       R"("swapUsedMB": {}, "swapTotalMB": {}, "swapPct": {}, "load1": {:.2f}, "ncpu": {}, )"
                       R"("pressureLevel": {}, "cpuPct": {} }})",
        stats.usedGB(), stats.totalGB(), stats.memPct(), stats.freeMB, stats.swapUsedMB, stats.swapTotalMB,
        stats.swapPct(), stats.load1, stats.ncpu, stats.pressureLevel, rounded(cpu));
}

} // namespace ostrel
