// SPDX-License-Identifier: Apache-2.0
#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/RealPlatform.h"
#include "app/Routes.h"
#include "readings/Arguments.h"

#include <string>
#include <vector>

int main(int argc, char** argv)
{
    // Neither is ever destroyed: a thread that waits for a child may outlive the end of main.
    auto& platform = *new ostrel::RealPlatform;
    auto& delegate = *new ostrel::AppDelegate(platform.services());
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const ostrel::Route route = ostrel::parseArguments(arguments);
    if (route.kind != ostrel::Route::Kind::application)
        return ostrel::runCommandLineRoute(route, delegate);
    return ostrel::runApplication(argc, argv, route.background, platform, delegate);
}
