// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

namespace platform {

/// Hands a small message to the other programs of this user's desktop session. Main thread only.
class DistributedNotificationCenter {
public:
    virtual ~DistributedNotificationCenter() = default;

    /// Sends at once. Without a bus or without a listener the message goes nowhere.
    virtual void post(const std::string& name, const std::map<std::string, std::string>& userInfo) = 0;
};

} // namespace platform
