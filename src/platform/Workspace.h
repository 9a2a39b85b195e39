// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"

#include <memory>
#include <string>

namespace platform {

/// Somebody is told of a change for as long as this lives. It may be destroyed inside its own job.
class Observation {
public:
    virtual ~Observation() = default;
};

/// What the user asked of the desktop as a whole. Main thread.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// Whether the user wants no movement on screen. Never waits: false until the desktop has answered.
    [[nodiscard]] virtual bool accessibilityDisplayShouldReduceMotion() const = 0;

    /// Whether the user wants what colour tells to be told by shape as well. Never waits, as above.
    [[nodiscard]] virtual bool accessibilityDisplayShouldDifferentiateWithoutColor() const = 0;

    /// Runs `changed` after each change of the above.
    [[nodiscard]] virtual std::unique_ptr<Observation> observeDisplayOptions(Job changed) = 0;

    /// Opens an address in the program that the desktop has for it. Returns at once; where there is none
    /// nothing happens.
    virtual void open(const std::string& url) = 0;
};

} // namespace platform
