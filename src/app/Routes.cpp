// SPDX-License-Identifier: Apache-2.0
#include "app/Routes.h"

#include "app/StandardStreams.h"
#include "bar/BarStateFile.h"
#include "core/Version.h"
#include "readings/NativeStats.h"
#include "readings/ReadingsLine.h"

#include <chrono>
#include <cstdio>
#include <thread>

#include <fmt/format.h>

namespace ostrel {

namespace {

using namespace std::chrono_literals;

int printReadings(AppDelegate& delegate)
{
    const NativeStats stats = readNativeStats(delegate.services().kernel);
    (void)delegate.cpuSampler().sample();
    std::this_thread::sleep_for(200ms);
    say(stdout, readingsLine(stats, delegate.cpuSampler().sample()) + "\n");
    return 0;
}

int printBarState(const AppDelegate& delegate)
{
    const auto& files = delegate.services().files;
    const auto state = readBarState(files);
    if (!state) {
        say(stderr, fmt::format("ostrel: no bar state written yet at {}\n", barStateFile(files)));
        return 2;
    }
    say(stdout, *state + "\n");
    return 0;
}

int sendTestbed(const AppDelegate& delegate, const std::string& action)
{
    delegate.services().notifications.post(std::string(appIdentifier) + ".testbed", { { "action", action } });
    say(stdout, fmt::format("ostrel: testbed {} sent\n", action));
    return 0;
}

} // namespace

int runCommandLineRoute(const Route& route, AppDelegate& delegate)
{
    switch (route.kind) {
    case Route::Kind::readings:
        return printReadings(delegate);
    case Route::Kind::barState:
        return printBarState(delegate);
    case Route::Kind::usage:
        say(stderr, usageMessage(route.unknownArgument));
        return 1;
    case Route::Kind::testbed:
        return sendTestbed(delegate, route.action);
    case Route::Kind::selfTest:
    case Route::Kind::application:
        break;
    }
    return 0;
}

} // namespace ostrel
