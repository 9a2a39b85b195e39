// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// What an address asks for.
struct RouteRequest {
    std::string command; ///< in lower case; any text
    bool testbed = false; ///< away from the bar item

    bool operator==(const RouteRequest&) const = default;
};

/// Addresses beyond so many bytes aren't read.
inline constexpr std::size_t longestRouteUrl = 4096;

/// Reads an address such as "ostrel://show" or "ostrel:?command=hide&testbed=1". The command is the host,
/// else the first item "command" of the query, else "show". Nothing for another scheme and for what isn't a
/// sound address; any bytes may come.
[[nodiscard]] std::optional<RouteRequest> parseRouteUrl(std::string_view text);

} // namespace ostrel
