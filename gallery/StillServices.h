// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/MotionServices.h"

#include <memory>
#include <string>

namespace ostrel {

/// A system in which nothing moves and nothing is ever called: what views get that are only drawn.
struct StillServices {
    struct Nothing final : platform::RunLoop,
                           platform::MainQueue,
                           platform::Workspace,
                           platform::WindowOcclusion {
        std::unique_ptr<platform::Timer> scheduleRepeating(platform::Seconds, platform::Job) override
        {
            return nullptr;
        }
        void post(platform::Job) override { }
        void postAfter(platform::Seconds, platform::Job) override { }
        bool accessibilityDisplayShouldReduceMotion() const override { return true; }
        bool accessibilityDisplayShouldDifferentiateWithoutColor() const override { return true; }
        std::unique_ptr<platform::Observation> observeDisplayOptions(platform::Job) override
        {
            return nullptr;
        }
        void open(const std::string&) override { }
        bool covered(platform::WindowHandle) const override { return false; }
        std::unique_ptr<platform::Observation> observe(platform::WindowHandle, platform::Job) override
        {
            return nullptr;
        }
    };

    Nothing nothing {};
    MotionServices services { nothing, nothing, nothing, nothing, true };
};

} // namespace ostrel
