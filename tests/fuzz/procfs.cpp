// SPDX-License-Identifier: Apache-2.0
/// Small texts of the kernel and the system: no bytes may lead a parser out of its bounds.
#include "platform/linux/Base64.h"
#include "platform/linux/LinuxProcessInfo.h"
#include "platform/linux/LinuxRunningInstances.h"
#include "platform/linux/ProcFields.h"

#include "fuzz/FuzzTarget.h"

#include <cmath>
#include <string>

using namespace platform;

void runOn(std::string_view text)
{
    const auto memory = parseMemInfo(text);
    check(memory.usedKiB() <= memory.memTotal.value_or(0)
        && memory.swapUsedKiB() <= memory.swapTotal.value_or(0));
    (void)memory.headroom();
    (void)parseCpuLine(text);
    (void)parseMemoryStall(text);
    check(std::isfinite(parseLeadingNumber(text)));
    (void)prettyOsName(text);
    check(fromBase64(toBase64(text)) == text);
    (void)fromBase64(text);
    // What stands in the brackets around a process's name tells nothing of it, unless it closes them itself.
    check(
        text.find(')') != std::string_view::npos || statField("1 (" + std::string(text) + ") S 7", 4) == "7");
    check(parseStartTicks(text).value_or(1) != 0);
    for (const int field : { 3, 22, 52 })
        (void)statField(text, field);
}
