// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/AppDelegate.h"
#include "app/RealPlatform.h"

#include <optional>
#include <string>

namespace ostrel {

/// Runs the instrument, unless an elder instance does, until it is asked to quit, by its menu or by a signal,
/// and gives the exit code. Without a reachable display it goes on without windows, so the bar item and the
/// readings still work.
[[nodiscard]] int runApplication(
    int& argc, char** argv, const LaunchWish& wish, RealPlatform& platform, AppDelegate& delegate);

/// The program's check of itself, with the snapshot of that file or a made-up one; gives the exit code. Needs
/// no display and no bus, and shows nothing.
[[nodiscard]] int runSelfTest(int& argc, char** argv, const std::optional<std::string>& snapshotPath,
    RealPlatform& platform, AppDelegate& delegate);

} // namespace ostrel
