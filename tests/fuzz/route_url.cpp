// SPDX-License-Identifier: Apache-2.0
/// Addresses from anywhere: no bytes may lead the parser out of its bounds or past what an address may hold.
#include "bar/RouteUrl.h"
#include "core/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto request = ostrel::parseRouteUrl(text);
    if (!request)
        return 0;
    const bool plain = std::ranges::all_of(text, [](char letter) { return letter > ' ' && letter < '\x7f'; });
    if (!plain || size > ostrel::longestRouteUrl || ostrel::lowered(text.substr(0, 7)) != "ostrel:"
        || ostrel::lowered(request->command) != request->command)
        std::abort();
    return 0;
}
