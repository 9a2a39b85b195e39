// SPDX-License-Identifier: Apache-2.0
#include "readings/Arguments.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Kind = Route::Kind;

struct Case {
    std::vector<std::string> arguments;
    Route route;
};

void expectRoutes(const std::vector<Case>& cases)
{
    for (const Case& c : cases) {
        std::string line;
        for (const std::string& argument : c.arguments)
            line += "[" + argument + "]";
        const Route route = parseArguments(c.arguments);
        EXPECT_EQ(static_cast<int>(route.kind), static_cast<int>(c.route.kind)) << line;
        EXPECT_EQ(route.snapshotPath, c.route.snapshotPath) << line;
        EXPECT_EQ(route.unknownArgument, c.route.unknownArgument) << line;
        EXPECT_EQ(route.action, c.route.action) << line;
        EXPECT_EQ(route.background, c.route.background) << line;
    }
}

TEST(Arguments, TheFirstRouteOfTheOrderWinsWhereverItsArgumentStands)
{
    expectRoutes({
        { { "--bar-state", "--readings" }, { .kind = Kind::readings } },
        { { "--testbed", "hide", "--bar-state" }, { .kind = Kind::barState } },
        { { "--testbed", "--self-test", "--readings", "--bar-state" }, { .kind = Kind::selfTest } },
        { { "show", "--readings" }, { .kind = Kind::readings } },
        { { "--testbed", "--background" }, { .kind = Kind::testbed, .action = "--background" } },
    });
}

TEST(Arguments, RoutesThatOnlyPrintIgnoreWhatNobodyKnows)
{
    expectRoutes({
        { { "--x", "--self-test" }, { .kind = Kind::selfTest } },
        { { "--readings", "--x" }, { .kind = Kind::readings } },
        { { "--x", "--bar-state", "--y" }, { .kind = Kind::barState } },
    });
}

TEST(Arguments, OnlyAnUnknownArgumentWithTwoDashesIsRefusedAndTheFirstIsNamed)
{
    expectRoutes({
        { { "--x" }, { .kind = Kind::usage, .unknownArgument = "--x" } },
        { { "--" }, { .kind = Kind::usage, .unknownArgument = "--" } },
        { { "--Readings" }, { .kind = Kind::usage, .unknownArgument = "--Readings" } },
        { { "--readings=1" }, { .kind = Kind::usage, .unknownArgument = "--readings=1" } },
        { { "--testbed", "show", "--nonsense" }, { .kind = Kind::usage, .unknownArgument = "--nonsense" } },
        { { "--testbed", "--b", "--a" }, { .kind = Kind::usage, .unknownArgument = "--b" } },
        { { "show" }, {} },
        { { "-x", "", "-" }, {} },
        { { "readings" }, {} },
    });
}

TEST(Arguments, WhatStandsBehindAnArgumentIsTakenFromItsFirstPlace)
{
    expectRoutes({
        { { "--testbed" }, { .kind = Kind::testbed, .action = "show" } },
        { { "--testbed", "banana" }, { .kind = Kind::testbed, .action = "banana" } },
        { { "--testbed", "" }, { .kind = Kind::testbed, .action = "" } },
        { { "hide", "--testbed", "toggle", "--testbed", "hide" },
            { .kind = Kind::testbed, .action = "toggle" } },
        { { "--testbed", "--testbed" }, { .kind = Kind::testbed, .action = "--testbed" } },
        { { "--self-test", "--snapshot", "a", "--snapshot", "b" },
            { .kind = Kind::selfTest, .snapshotPath = "a" } },
        { { "--snapshot", "--self-test" }, { .kind = Kind::selfTest, .snapshotPath = "--self-test" } },
        { { "--self-test", "--snapshot" }, { .kind = Kind::selfTest } },
        { { "--self-test", "a" }, { .kind = Kind::selfTest } },
    });
}

TEST(Arguments, EverythingElseStartsTheApplication)
{
    expectRoutes({
        { {}, {} },
        { { "--snapshot", "a" }, {} },
        { { "--snapshot" }, {} },
        { { "--background" }, { .background = true } },
        { { "-x", "--background", "--snapshot" }, { .background = true } },
    });
}

TEST(Arguments, TheUsageMessageNamesTheArgumentAsItWasGiven)
{
    EXPECT_EQ(usageMessage("--{}%s"),
        "ostrel: unknown argument --{}%s. Routes: --testbed show|hide|toggle, --readings, --self-test, "
        "--background\n");
}

} // namespace
