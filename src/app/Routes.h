// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/AppDelegate.h"
#include "readings/Arguments.h"

namespace ostrel {

/// Carries out a route that answers and ends: every kind but `application` and `selfTest`. Prints on standard
/// output and standard error, and gives the exit code. Needs no display and no bus.
[[nodiscard]] int runCommandLineRoute(const Route& route, AppDelegate& delegate);

} // namespace ostrel
