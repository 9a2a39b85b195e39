// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UrlEvents.h"

#include "support/CallLog.h"

#include <utility>
#include <vector>

/// Keeps the handlers for a test to run, and what was handed to another instance.
struct FakeUrlEvents final : platform::UrlEvents, Logged {
    void start(platform::DesktopRequests newHandlers) override
    {
        note("listens to addresses");
        handlers = std::move(newHandlers);
    }
    void stop() override
    {
        note("listens to no address");
        handlers = {};
    }
    bool handOver(const std::vector<std::string>& urls) override
    {
        note("hands over to the elder");
        handed.push_back(urls);
        return true;
    }

    platform::DesktopRequests handlers;
    std::vector<std::vector<std::string>> handed;
};
