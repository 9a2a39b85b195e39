// SPDX-License-Identifier: Apache-2.0
/// Whatever a script prints is read or refused, and what was read can be printed again as valid JSON.
#include "collector/OstrelData.h"
#include "core/Json.h"

#include "fuzz/FuzzTarget.h"

using namespace ostrel;

void runOn(std::string_view text)
{
    const auto object = json::parseObject(text);
    if (!object)
        return;
    const auto snapshot = OstrelData::parse(*object);
    for (const auto& row : snapshot.procs)
        check(row.pid.size() <= text.size());
    check(json::parseObject(json::dump(*object)) == *object);
}
