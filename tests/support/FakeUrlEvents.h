// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UrlEvents.h"

#include <utility>
#include <vector>

/// Keeps the handlers for a test to run, and what was handed to another instance.
struct FakeUrlEvents final : platform::UrlEvents {
    void start(std::function<void(const std::string&)> newOpen, platform::Job newReopen) override
    {
        open = std::move(newOpen);
        reopen = std::move(newReopen);
    }
    bool handOver(const std::vector<std::string>& urls) override
    {
        handed.push_back(urls);
        return true;
    }

    std::function<void(const std::string&)> open;
    platform::Job reopen;
    std::vector<std::vector<std::string>> handed;
};
