// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/PlatformServices.h"

#include "support/CallLog.h"
#include "support/FakeAlerts.h"
#include "support/FakeFloatingWindows.h"
#include "support/FakeHotKeyCenter.h"
#include "support/FakeMachine.h"
#include "support/FakeOcclusion.h"
#include "support/FakePasteboard.h"
#include "support/FakePopovers.h"
#include "support/FakeProcessSignals.h"
#include "support/FakeRunningInstances.h"
#include "support/FakeScreens.h"
#include "support/FakeStatusBar.h"
#include "support/FakeSurfaceHosts.h"
#include "support/FakeUrlEvents.h"
#include "support/FakeUserDefaultsSuites.h"
#include "support/FakeWorkspace.h"
#include "support/Observers.h"

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Everything that the application asks of an operating system, as fakes.
struct FakePlatform : FakeMachine {
    struct Machine final : platform::ProcessInfo {
        [[nodiscard]] std::string operatingSystemVersionString() const override { return "Test OS 1"; }
        [[nodiscard]] double systemUptime() const override { return 7200; }
        [[nodiscard]] std::optional<platform::ThermalState> thermalState() const override { return {}; }
        [[nodiscard]] std::optional<bool> isLowPowerModeEnabled() const override { return {}; }
        [[nodiscard]] int activeProcessorCount() const override { return 2; }
    };

    struct Notifications final : platform::DistributedNotificationCenter {
        void post(const std::string& name, const platform::UserInfo& userInfo) override
        {
            posted.emplace_back(name, userInfo);
        }
        [[nodiscard]] std::unique_ptr<platform::Observation> observe(
            const std::string& name, std::function<void(const platform::UserInfo&)> received) override
        {
            return observers.add([this, name, received = std::move(received)] {
                if (posted.back().first == name)
                    received(posted.back().second);
            });
        }
        std::vector<std::pair<std::string, platform::UserInfo>> posted;
        Observers observers; ///< told of the last that was posted
    };

    [[nodiscard]] ostrel::PlatformServices services()
    {
        return { kernel, machine, children, processSignals, defaults, suites, files, bundle, time, time, time,
            globalQueue, statusBar, notifications, workspace, pasteboard, occlusion, popovers, mouse, hotKeys,
            screens, alerts, floatingWindows, urlEvents, instances, [this] { ++quits; } };
    }

    /// From now on all fakes write into the log.
    void record()
    {
        mouse.monitors.what = "press";
        mouse.keyMonitors.what = "key";
        notifications.observers.what = "message";
        occlusion.observers.what = "cover";
        workspace.observers.what = "display option";
        for (Logged* fake :
            std::initializer_list<Logged*> { &kernel, &children, &defaults, &files, &time, &globalQueue,
                &statusBar, &notifications.observers, &workspace.observers, &occlusion.observers, &popovers,
                &mouse.monitors, &mouse.keyMonitors, &hotKeys, &urlEvents, &instances })
            fake->logTo(log);
    }

    CallLog log; ///< outlives all others
    Machine machine;
    FakeProcessSignals processSignals;
    FakeStatusBar statusBar;
    Notifications notifications;
    FakeWorkspace workspace;
    FakePasteboard pasteboard;
    FakeOcclusion occlusion;
    FakePopovers popovers;
    FakeSurfaceHosts mouse;
    FakeHotKeyCenter hotKeys;
    FakeUserDefaultsSuites suites;
    FakeScreens screens;
    FakeAlerts alerts;
    FakeFloatingWindows floatingWindows;
    FakeUrlEvents urlEvents;
    FakeRunningInstances instances;
    int quits = 0;
};
