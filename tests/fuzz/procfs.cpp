// SPDX-License-Identifier: Apache-2.0
/// Small texts of the kernel and the system: no bytes may lead a parser out of its bounds.
#include "platform/linux/Base64.h"
#include "platform/linux/LinuxProcessInfo.h"
#include "platform/linux/LinuxRunningInstances.h"
#include "platform/linux/ProcFields.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto memory = platform::parseMemInfo(text);
    if (memory.usedKiB() > memory.memTotal.value_or(0) || memory.swapUsedKiB() > memory.swapTotal.value_or(0))
        std::abort();
    (void)memory.headroom();
    (void)platform::parseCpuLine(text);
    (void)platform::parseMemoryStall(text);
    if (!std::isfinite(platform::parseLeadingNumber(text)))
        std::abort();
    (void)platform::prettyOsName(text);
    if (platform::fromBase64(platform::toBase64(text)) != text)
        std::abort();
    (void)platform::fromBase64(text);
    // What stands in the brackets around a process's name tells nothing of it, unless it closes them itself.
    if (text.find(')') == std::string_view::npos
        && platform::statField("1 (" + std::string(text) + ") S 7", 4) != "7")
        std::abort();
    const auto start = platform::parseStartTicks(text);
    if (start && *start == 0)
        std::abort();
    for (const int field : { 3, 22, 52 })
        (void)platform::statField(text, field);
    return 0;
}
