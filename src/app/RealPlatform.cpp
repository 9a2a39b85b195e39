// SPDX-License-Identifier: Apache-2.0
#include "app/RealPlatform.h"

#include "core/Version.h"
#include "design/Fonts.h"

#include <string>

#include <QCoreApplication>

namespace ostrel {

RealPlatform::RealPlatform()
    : defaults_(files_, std::string(appIdentifier))
    , suites_(files_)
    , bundle_(platform::LinuxBundle::runningExecutableFolder())
    , statusBar_(mainQueue_, struts_, registerPlexFaces)
    , notifications_(mainQueue_)
    , workspace_(mainQueue_)
    , occlusion_(mainQueue_)
    , screens_(struts_)
    , popovers_(screens_)
    , events_(mainQueue_)
    , hotKeys_(mainQueue_)
    , urlEvents_(mainQueue_, std::string(appIdentifier))
{
}

PlatformServices RealPlatform::services()
{
    return { .kernel = kernel_,
        .processInfo = processInfo_,
        .children = children_,
        .processSignals = processSignals_,
        .defaults = defaults_,
        .suites = suites_,
        .files = files_,
        .bundle = bundle_,
        .clock = clock_,
        .mainQueue = mainQueue_,
        .runLoop = runLoop_,
        .globalQueue = globalQueue_,
        .statusBar = statusBar_,
        .notifications = notifications_,
        .workspace = workspace_,
        .pasteboard = pasteboard_,
        .occlusion = occlusion_,
        .popovers = popovers_,
        .events = events_,
        .hotKeys = hotKeys_,
        .screens = screens_,
        .alerts = alerts_,
        .floatingWindows = floatingWindows_,
        .urlEvents = urlEvents_,
        .instances = instances_,
        .quit = [] { QCoreApplication::quit(); } };
}

} // namespace ostrel
