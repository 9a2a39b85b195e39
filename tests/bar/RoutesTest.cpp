// SPDX-License-Identifier: Apache-2.0
#include "bar/Routes.h"

#include "bar/RouteUrl.h"
#include "bar/SingleInstance.h"

#include "bar/BarBench.h"
#include "support/FakeRunningInstances.h"
#include "support/FakeUrlEvents.h"

#include <tuple>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace std::string_literals;
using Calls = std::vector<std::string>;

TEST(RouteUrl, TheCommandIsTheHostOrElseTheFirstItemOfThatNameOrElseShow)
{
    for (const auto& [text, command, testbed] : std::vector<std::tuple<std::string, std::string, bool>> {
             { "ostrel:", "show", false },
             { "OSTREL://SHOW", "show", false },
             { "ostrel:hide", "show", false },
             { "ostrel:///hide", "show", false },
             { "ostrel://u:p@Hide:80/show?command=show#x", "hide", false },
             { "ostrel://h%69d%65", "hide", false },
             { "ostrel://[::1]:", "::1", false },
             { "ostrel:?command=HIDE&command=show", "hide", false },
             { "ostrel://?x&%63ommand=a=b+c%26d", "a=b+c&d", false },
             { "ostrel:?Command=hide", "show", false },
             { "ostrel:?command&command=hide", "show", false },
             { "ostrel:?command=", "", false },
             { "ostrel:#?command=hide", "show", false },
             { "ostrel://toggle?testbed=1", "toggle", true },
             { "ostrel:?command=open&TestBed=%59eS", "open", true },
             { "ostrel://show?testbed=maybe&testbed=1", "show", false },
             { "ostrel://show?testbed", "show", false },
             { "ostrel://show?testbed=on#&testbed=no", "show", true },
         })
        EXPECT_EQ(parseRouteUrl(text), (RouteRequest { command, testbed })) << text;
}

TEST(RouteUrl, WhatIsNoSoundAddressOfThisSchemeIsNotRead)
{
    for (const std::string& text : { ""s, "ostrel"s, "show"s, "http://show"s, "ostrels://show"s, "://show"s,
             " ostrel://show"s, "ostrel://show\n"s, "ostrel://show\0"s, "ostrel://sh\xc3\xb6w"s,
             "ostrel://a b"s, "ostrel://show?x=%"s, "ostrel://show#%4"s, "ostrel://%+1"s, "ostrel://show:x"s,
             "ostrel://[::1"s, "ostrel://[a]b"s, "ostrel://a[b"s, "ostrel://show?\"x\""s,
             "ostrel://show?" + std::string(longestRouteUrl, 'x') })
        EXPECT_EQ(parseRouteUrl(text), std::nullopt) << text;
}

TEST(Routes, EveryWayLeadsToTheSameCommands)
{
    FakeDoor door;
    FakePanel body;
    Routes routes(door, body);
    for (const bool open : { false, true }) {
        door.open = open;
        for (const std::string command : { "show", "open", "hide", "close", "toggle", "rename", "" }) {
            routes.handleUrl("ostrel:?command=" + command);
            routes.handleUrl("ostrel:?testbed=1&command=" + command);
        }
        const std::string toggled = open ? "route-toggle" : "show";
        EXPECT_EQ(door.calls,
            (Calls { "show", "testbed", "show", "testbed", "route-hide", "route-hide", "route-hide",
                "route-hide", toggled, open ? toggled : "testbed" }));
        door.calls.clear();
    }
    routes.handleUrl("http://show");
    routes.handleTestbedNotification({ { "action", "HIDE" }, { "x", "show" } });
    routes.handleTestbedNotification({ { "action", "banana" } });
    routes.handleTestbedNotification({});
    routes.handleReopen();
    routes.handleAction("show");
    routes.handleAction("quit");
    EXPECT_EQ(body.tab, OstrelMode::overview);
    routes.handleAction("settings");
    EXPECT_EQ(body.tab, OstrelMode::settings);
    EXPECT_EQ(door.calls, (Calls { "route-hide", "testbed", "show", "show", "show" }));
}

TEST(SingleInstance, OfTwoProcessesTheElderStaysAndGetsWhatTheYoungerWasAskedFor)
{
    const platform::RunningInstance none { .pid = 7, .launch = {} };
    EXPECT_EQ(elderPid({ .pid = 5, .launch = {} }, { none }), std::nullopt) << "process ids decide";
    EXPECT_EQ(elderPid({ .pid = 8, .launch = {} }, { none }), 7);
    EXPECT_EQ(elderPid({ .pid = 5, .launch = 0 }, { none }), 7) << "an unknown start is the earliest";
    EXPECT_EQ(elderPid({ .pid = 5, .launch = 9 }, { { 3, 10 }, { 6, 9 }, { 9, 8 }, { 4, 9 } }), 9);

    FakeRunningInstances instances;
    FakeUrlEvents events;
    instances.rest = { { 200, 1001 } };
    EXPECT_EQ(enforceSingleInstance(instances, events, {}), std::nullopt);
    EXPECT_TRUE(events.handed.empty());
    instances.rest = { { 200, 999 } };
    for (const LaunchWish& wish : { LaunchWish {}, LaunchWish { .background = true },
             LaunchWish { .urls = { "ostrel:a", "ostrel:b" }, .background = true } })
        EXPECT_EQ(enforceSingleInstance(instances, events, wish),
            "ostrel: pid 200 is older – exiting duplicate pid 100\n");
    EXPECT_EQ(events.handed, (std::vector<std::vector<std::string>> { {}, { "ostrel:a", "ostrel:b" } }));
}

} // namespace
