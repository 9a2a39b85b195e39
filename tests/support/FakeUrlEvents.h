// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UrlEvents.h"

#include "support/CallLog.h"

#include <utility>
#include <vector>

/// Keeps the handlers for a test to run, and what was handed to another instance.
struct FakeUrlEvents final : platform::UrlEvents, Logged {
    void start(std::function<void(const std::string&)> newOpen, platform::Job newReopen) override
    {
        note("listens to addresses");
        open = std::move(newOpen);
        reopen = std::move(newReopen);
    }
    void stop() override
    {
        note("listens to no address");
        open = {};
        reopen = {};
    }
    bool handOver(const std::vector<std::string>& urls) override
    {
        note("hands over to the elder");
        handed.push_back(urls);
        return true;
    }

    std::function<void(const std::string&)> open;
    platform::Job reopen;
    std::vector<std::vector<std::string>> handed;
};
