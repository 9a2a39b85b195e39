// SPDX-License-Identifier: Apache-2.0
/// Addresses from anywhere: no bytes may lead the parser out of its bounds or past what an address may hold.
#include "bar/RouteUrl.h"
#include "core/Text.h"

#include "fuzz/FuzzTarget.h"

#include <algorithm>

using namespace ostrel;

void runOn(std::string_view text)
{
    const auto request = parseRouteUrl(text);
    if (!request)
        return;
    check(std::ranges::all_of(text, [](char letter) { return letter > ' ' && letter < '\x7f'; }));
    check(text.size() <= longestRouteUrl && lowered(text.substr(0, 7)) == "ostrel:"
        && lowered(request->command) == request->command);
}
