// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Alerts.h"
#include "platform/Bundle.h"
#include "platform/ChildProcess.h"
#include "platform/Clock.h"
#include "platform/DistributedNotificationCenter.h"
#include "platform/EventMonitor.h"
#include "platform/FileManager.h"
#include "platform/FloatingWindows.h"
#include "platform/GlobalQueue.h"
#include "platform/HotKeyCenter.h"
#include "platform/Kernel.h"
#include "platform/MainQueue.h"
#include "platform/Pasteboard.h"
#include "platform/Popover.h"
#include "platform/ProcessInfo.h"
#include "platform/ProcessSignals.h"
#include "platform/RunningInstances.h"
#include "platform/Screens.h"
#include "platform/StatusItem.h"
#include "platform/Timer.h"
#include "platform/UrlEvents.h"
#include "platform/UserDefaults.h"
#include "platform/WindowOcclusion.h"
#include "platform/Workspace.h"

#include <functional>

namespace ostrel {

/// All that the application asks of an operating system. Every part outlives the application object, and
/// those that background jobs use (child processes, files, the main queue) live to the end of the process.
struct PlatformServices {
    platform::Kernel& kernel;
    platform::ProcessInfo& processInfo;
    platform::ChildProcess& children;
    platform::ProcessSignals& processSignals;
    platform::UserDefaults& defaults;
    platform::UserDefaultsSuites& suites;
    platform::FileManager& files;
    platform::Bundle& bundle;
    platform::Clock& clock;
    platform::MainQueue& mainQueue;
    platform::RunLoop& runLoop;
    platform::GlobalQueue& globalQueue;
    platform::StatusBar& statusBar;
    platform::DistributedNotificationCenter& notifications;
    platform::Workspace& workspace;
    platform::Pasteboard& pasteboard;
    platform::WindowOcclusion& occlusion;
    platform::Popovers& popovers;
    platform::EventMonitor& events;
    platform::HotKeyCenter& hotKeys;
    platform::Screens& screens;
    platform::Alerts& alerts;
    platform::FloatingWindows& floatingWindows;
    platform::UrlEvents& urlEvents;
    platform::RunningInstances& instances;
    std::function<void()> quit; ///< ends the event loop
};

} // namespace ostrel
