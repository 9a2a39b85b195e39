// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"

#include <functional>
#include <string>
#include <vector>

namespace platform {

/// What the desktop asks of the running program: to open an address, or to come forward. Main thread.
class UrlEvents {
public:
    virtual ~UrlEvents() = default;

    /// From now on each address, as it was given, and each request to come forward runs its handler in a turn
    /// of its own.
    virtual void start(std::function<void(const std::string&)> open, Job reopen) = 0;
    /// Nothing comes any more, and another instance may listen.
    virtual void stop() = 0;

    /// Hands the addresses, or without any a request to come forward, to the instance that listens. Waits a
    /// second at most. False when nobody took it.
    virtual bool handOver(const std::vector<std::string>& urls) = 0;
};

} // namespace platform
