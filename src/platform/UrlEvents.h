// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"

#include <functional>
#include <string>
#include <vector>

namespace platform {

/// What is done at each kind of request of the desktop.
struct DesktopRequests {
    std::function<void(const std::string&)> open; ///< an address, as it was given
    Job reopen; ///< to come forward
    std::function<void(const std::string&)> action; ///< an action of the desktop entry, by its name; any text
};

/// What the desktop asks of the running program: to open an address, to come forward, or to do one of the
/// actions of its desktop entry. Main thread.
class UrlEvents {
public:
    virtual ~UrlEvents() = default;

    /// From now on each address, each action and each request to come forward runs its handler in a turn of
    /// its own.
    virtual void start(DesktopRequests handlers) = 0;
    /// Nothing comes any more, and another instance may listen.
    virtual void stop() = 0;

    /// Hands the addresses, or without any a request to come forward, to the instance that listens. Waits a
    /// second at most. False when nobody took it.
    virtual bool handOver(const std::vector<std::string>& urls) = 0;
};

} // namespace platform
