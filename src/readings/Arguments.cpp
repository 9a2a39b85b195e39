// SPDX-License-Identifier: Apache-2.0
#include "readings/Arguments.h"

#include "core/Text.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::array<std::string_view, 6> known { "--background", "--self-test", "--snapshot", "--testbed",
    "--readings", "--bar-state" };
constexpr std::string_view scheme = "ostrel:";

/// The argument directly behind the first `name`; nothing when `name` is absent or stands last.
std::optional<std::string> behind(std::span<const std::string> arguments, std::string_view name)
{
    const auto at = std::ranges::find(arguments, name);
    if (at == arguments.end() || at + 1 == arguments.end())
        return std::nullopt;
    return *(at + 1);
}

bool isAddress(std::string_view argument) { return lowered(argument.substr(0, scheme.size())) == scheme; }

} // namespace

Route parseArguments(std::span<const std::string> arguments)
{
    const auto has
        = [&](std::string_view name) { return std::ranges::find(arguments, name) != arguments.end(); };
    Route route;
    if (has("--self-test")) {
        route.kind = Route::Kind::selfTest;
        route.snapshotPath = behind(arguments, "--snapshot");
        return route;
    }
    if (has("--readings")) {
        route.kind = Route::Kind::readings;
        return route;
    }
    if (has("--bar-state")) {
        route.kind = Route::Kind::barState;
        return route;
    }
    for (const std::string& argument : arguments) {
        if (argument.starts_with("--") && std::ranges::find(known, argument) == known.end()) {
            route.kind = Route::Kind::usage;
            route.unknownArgument = argument;
            return route;
        }
    }
    if (has("--testbed")) {
        route.kind = Route::Kind::testbed;
        route.action = behind(arguments, "--testbed").value_or("show");
        return route;
    }
    route.background = has("--background");
    std::ranges::copy_if(arguments, std::back_inserter(route.urls), isAddress);
    return route;
}

std::string usageMessage(const std::string& argument)
{
    return fmt::format(
        "ostrel: unknown argument {}. Routes: --testbed show|hide|toggle, --readings, --self-test, "
        "--background\n",
        argument);
}

} // namespace ostrel
