// SPDX-License-Identifier: Apache-2.0
#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/RealPlatform.h"
#include "app/Routes.h"
#include "readings/Arguments.h"

#include <string>
#include <vector>

namespace {

// Neither is ever destroyed: a thread that waits for a child may outlive the end of main.
ostrel::RealPlatform* app = nullptr;
ostrel::AppDelegate* delegate = nullptr;

} // namespace

int main(int argc, char** argv)
{
    app = new ostrel::RealPlatform;
    delegate = new ostrel::AppDelegate(app->services());
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const ostrel::Route route = ostrel::parseArguments(arguments);
    if (route.kind == ostrel::Route::Kind::selfTest)
        return ostrel::runSelfTest(argc, argv, route.snapshotPath, *app, *delegate);
    if (route.kind != ostrel::Route::Kind::application)
        return ostrel::runCommandLineRoute(route, *delegate);
    return ostrel::runApplication(argc, argv, { route.urls, route.background }, *app, *delegate);
}
