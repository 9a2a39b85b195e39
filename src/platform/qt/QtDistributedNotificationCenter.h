// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/DistributedNotificationCenter.h"

namespace platform {

/// Messages as one signal on the session bus: Posted(name, dictionary of texts) from /dev/quent/ostrel.
class QtDistributedNotificationCenter final : public DistributedNotificationCenter {
public:
    /// Works without an event loop: the message has left the process on return.
    void post(const std::string& name, const std::map<std::string, std::string>& userInfo) override;
};

} // namespace platform
