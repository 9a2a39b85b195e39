// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UrlEvents.h"

#include <utility>
#include <vector>

/// Keeps the handlers for a test to run, and what was handed to another instance.
struct FakeUrlEvents final : platform::UrlEvents {
    void start(platform::DesktopRequests newHandlers) override { handlers = std::move(newHandlers); }
    bool handOver(const std::vector<std::string>& urls) override
    {
        handed.push_back(urls);
        return true;
    }

    platform::DesktopRequests handlers;
    std::vector<std::vector<std::string>> handed;
};
