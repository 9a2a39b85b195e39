// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/PlatformServices.h"

#include "support/FakeBundle.h"
#include "support/FakeChildProcess.h"
#include "support/FakeFileManager.h"
#include "support/FakeKernel.h"
#include "support/FakeStatusBar.h"
#include "support/FakeUserDefaults.h"
#include "support/ManualGlobalQueue.h"
#include "support/VirtualTime.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

/// Everything that the application asks of an operating system, as fakes.
struct FakePlatform {
    struct Machine final : platform::ProcessInfo {
        [[nodiscard]] std::string operatingSystemVersionString() const override { return "Test OS 1"; }
        [[nodiscard]] double systemUptime() const override { return 7200; }
        [[nodiscard]] std::optional<platform::ThermalState> thermalState() const override { return {}; }
        [[nodiscard]] std::optional<bool> isLowPowerModeEnabled() const override { return {}; }
        [[nodiscard]] int activeProcessorCount() const override { return 2; }
    };

    struct Notifications final : platform::DistributedNotificationCenter {
        void post(const std::string& name, const std::map<std::string, std::string>& userInfo) override
        {
            posted.emplace_back(name, userInfo);
        }
        std::vector<std::pair<std::string, std::map<std::string, std::string>>> posted;
    };

    [[nodiscard]] ostrel::PlatformServices services()
    {
        return { .kernel = kernel,
            .processInfo = machine,
            .children = children,
            .defaults = defaults,
            .files = files,
            .bundle = bundle,
            .clock = time,
            .mainQueue = time,
            .runLoop = time,
            .globalQueue = globalQueue,
            .statusBar = statusBar,
            .notifications = notifications,
            .quit = [this] { ++quits; } };
    }

    FakeKernel kernel;
    Machine machine;
    FakeChildProcess children;
    FakeUserDefaults defaults;
    FakeFileManager files;
    FakeBundle bundle;
    VirtualTime time;
    ManualGlobalQueue globalQueue;
    FakeStatusBar statusBar;
    Notifications notifications;
    int quits = 0;
};
