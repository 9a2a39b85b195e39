// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Workspace.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace platform {

/// What a message says, by key.
using UserInfo = std::map<std::string, std::string>;

/// Hands a small message to the other programs of this user's desktop session. Main thread only.
class DistributedNotificationCenter {
public:
    virtual ~DistributedNotificationCenter() = default;

    /// Sends at once. Without a bus or without a listener the message goes nowhere.
    virtual void post(const std::string& name, const UserInfo& userInfo) = 0;

    /// Runs `received` for each message of that name, whoever sends it, in a turn of its own. Values that
    /// aren't text are left out. Without a bus it never runs.
    [[nodiscard]] virtual std::unique_ptr<Observation> observe(
        const std::string& name, std::function<void(const UserInfo&)> received)
        = 0;
};

} // namespace platform
