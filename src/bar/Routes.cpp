// SPDX-License-Identifier: Apache-2.0
#include "bar/Routes.h"

#include "bar/RouteUrl.h"
#include "core/Text.h"

namespace ostrel {

Routes::Routes(PanelDoor& panel, PanelBody& body)
    : panel_(panel)
    , body_(body)
{
}

void Routes::handleUrl(std::string_view text)
{
    if (const auto request = parseRouteUrl(text))
        handleRouteCommand(request->command, request->testbed);
}

void Routes::handleTestbedNotification(const platform::UserInfo& userInfo)
{
    const auto action = userInfo.find("action");
    handleRouteCommand(action == userInfo.end() ? "show" : lowered(action->second), true);
}

void Routes::handleReopen() { panel_.show(); }

void Routes::handleAction(std::string_view name)
{
    if (name != "show" && name != "settings")
        return;
    panel_.show();
    if (name == "settings")
        body_.switchMode(OstrelMode::settings);
}

void Routes::handleRouteCommand(std::string_view command, bool testbed)
{
    const bool toggle = command == "toggle";
    if (command == "hide" || command == "close")
        panel_.close("route-hide");
    else if (toggle && panel_.shown())
        panel_.close("route-toggle");
    else if ((toggle || command == "show" || command == "open") && testbed)
        panel_.showTestbed();
    else if (toggle || command == "show" || command == "open")
        panel_.show();
}

} // namespace ostrel
