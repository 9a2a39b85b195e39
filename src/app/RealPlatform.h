// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/PlatformServices.h"
#include "platform/linux/LinuxBundle.h"
#include "platform/linux/LinuxChildProcess.h"
#include "platform/linux/LinuxClock.h"
#include "platform/linux/LinuxFileManager.h"
#include "platform/linux/LinuxGlobalQueue.h"
#include "platform/linux/LinuxKernel.h"
#include "platform/linux/LinuxProcessInfo.h"
#include "platform/linux/LinuxProcessSignals.h"
#include "platform/linux/LinuxRunningInstances.h"
#include "platform/linux/LinuxUserDefaults.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtDistributedNotificationCenter.h"
#include "platform/qt/QtFloatingWindows.h"
#include "platform/qt/QtHotKeyCenter.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtPasteboard.h"
#include "platform/qt/QtPopover.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/qt/QtScreens.h"
#include "platform/qt/QtStatusItem.h"
#include "platform/qt/QtUrlEvents.h"
#include "platform/qt/QtWorkspace.h"
#include "platform/qt/X11EventMonitor.h"
#include "platform/qt/X11Struts.h"
#include "platform/qt/X11WindowOcclusion.h"

namespace ostrel {

/// The machine and the desktop as they are. Constructing it opens no display, no bus and no thread.
class RealPlatform {
public:
    RealPlatform();

    [[nodiscard]] PlatformServices services();
    [[nodiscard]] platform::QtMainQueue& mainQueue() { return mainQueue_; }

private:
    platform::LinuxFileManager files_;
    platform::LinuxKernel kernel_;
    platform::LinuxProcessInfo processInfo_;
    platform::LinuxChildProcess children_;
    platform::LinuxProcessSignals processSignals_;
    platform::LinuxUserDefaults defaults_;
    platform::LinuxUserDefaultsSuites suites_;
    platform::LinuxBundle bundle_;
    platform::LinuxClock clock_;
    platform::QtMainQueue mainQueue_;
    platform::QtRunLoop runLoop_;
    platform::LinuxGlobalQueue globalQueue_;
    platform::X11Struts struts_; ///< one for the item and the displays
    platform::QtStatusBar statusBar_;
    platform::QtDistributedNotificationCenter notifications_;
    platform::QtWorkspace workspace_;
    platform::QtPasteboard pasteboard_;
    platform::X11WindowOcclusion occlusion_;
    platform::QtScreens screens_;
    platform::QtPopovers popovers_;
    platform::X11EventMonitor events_;
    platform::QtHotKeyCenter hotKeys_;
    platform::QtAlerts alerts_;
    platform::QtFloatingWindows floatingWindows_;
    platform::QtUrlEvents urlEvents_;
    platform::LinuxRunningInstances instances_;
};

} // namespace ostrel
