// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/PanelBody.h"
#include "core/PanelDoor.h"
#include "platform/DistributedNotificationCenter.h"

#include <string_view>

namespace ostrel {

/// What other programs may ask of the panel: to show it, to hide it, or the one that it isn't, and the
/// desktop to open the settings. What isn't known is dropped silently. Main thread.
class Routes {
public:
    /// Both outlive this.
    Routes(PanelDoor& panel, PanelBody& body);

    /// An address that was opened; any bytes.
    void handleUrl(std::string_view text);
    /// The message of the command-line route: its "action", or else "show", at the testbed.
    void handleTestbedNotification(const platform::UserInfo& userInfo);
    /// The program was opened once more.
    void handleReopen();
    /// An action of the desktop entry: "show", or "settings", which shows that tab.
    void handleAction(std::string_view name);
    /// `command` in lower case.
    void handleRouteCommand(std::string_view command, bool testbed);

private:
    PanelDoor& panel_;
    PanelBody& body_;
};

} // namespace ostrel
