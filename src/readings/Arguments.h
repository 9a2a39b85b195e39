// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ostrel {

/// What one launch of the program is for.
struct Route {
    enum class Kind {
        selfTest, ///< build the panel off screen and check it
        readings, ///< print one reading
        barState, ///< print the bar item's state file
        usage, ///< refuse an unknown argument
        testbed, ///< send an action to the running instance
        application, ///< run the instrument
    };

    Kind kind = Kind::application;
    std::optional<std::string> snapshotPath; ///< self-test: the snapshot to use
    std::string unknownArgument; ///< usage: the first one
    std::string action; ///< testbed: any text
    bool background = false; ///< application: start without opening the panel
    std::vector<std::string>
        urls; ///< application: the addresses to open, in order; any bytes behind "ostrel:"

    bool operator==(const Route&) const = default;
};

/// Reads the arguments behind the program's name, compared exactly. An argument with two dashes that nobody
/// knows is refused, unless a route that only prints was asked for; one without is never refused.
[[nodiscard]] Route parseArguments(std::span<const std::string> arguments);

/// What an unknown argument gets on standard error, with its line break.
[[nodiscard]] std::string usageMessage(const std::string& argument);

} // namespace ostrel
