// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/PanelDoor.h"
#include "platform/DistributedNotificationCenter.h"

#include <string_view>

namespace ostrel {

/// What other programs may ask of the panel: to show it, to hide it, or the one that it isn't. All ways lead
/// to one handler of commands; what it doesn't know is dropped silently. Main thread.
class Routes {
public:
    /// The door outlives this.
    explicit Routes(PanelDoor& panel);

    /// An address that was opened; any bytes.
    void handleUrl(std::string_view text);
    /// The message of the command-line route: its "action", or else "show", at the testbed.
    void handleTestbedNotification(const platform::UserInfo& userInfo);
    /// The program was opened once more.
    void handleReopen();
    /// `command` in lower case.
    void handleRouteCommand(std::string_view command, bool testbed);

private:
    PanelDoor& panel_;
};

} // namespace ostrel
