// SPDX-License-Identifier: Apache-2.0
#include "readings/Arguments.h"

#include <fmt/ranges.h>
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
    for (const auto& [arguments, route] : cases)
        EXPECT_EQ(parseArguments(arguments), route) << fmt::format("{}", arguments);
}

TEST(Arguments, TheFirstRouteOfTheOrderWinsAndOneThatOnlyPrintsIgnoresWhatNobodyKnows)
{
    expectRoutes({
        { { "--testbed", "--self-test", "--readings", "--bar-state", "--x" }, { .kind = Kind::selfTest } },
        { { "--x", "show", "--bar-state", "--readings" }, { .kind = Kind::readings } },
        { { "--testbed", "hide", "--x", "--bar-state" }, { .kind = Kind::barState } },
        { { "--testbed", "--background" }, { .kind = Kind::testbed, .action = "--background" } },
    });
}

TEST(Arguments, OnlyAnUnknownArgumentWithTwoDashesIsRefusedAndTheFirstIsNamed)
{
    expectRoutes({
        { { "--" }, { .kind = Kind::usage, .unknownArgument = "--" } },
        { { "--Readings" }, { .kind = Kind::usage, .unknownArgument = "--Readings" } },
        { { "--readings=1" }, { .kind = Kind::usage, .unknownArgument = "--readings=1" } },
        { { "--testbed", "show", "--b", "--a" }, { .kind = Kind::usage, .unknownArgument = "--b" } },
        { { "-x", "", "-", "readings" }, {} },
    });
}

TEST(Arguments, WhatStandsBehindAnArgumentIsTakenFromItsFirstPlace)
{
    expectRoutes({
        { { "--testbed" }, { .kind = Kind::testbed, .action = "show" } },
        { { "--testbed", "" }, { .kind = Kind::testbed, .action = "" } },
        { { "hide", "--testbed", "banana", "--testbed", "show" },
            { .kind = Kind::testbed, .action = "banana" } },
        { { "--self-test", "--snapshot", "a", "--snapshot", "b" },
            { .kind = Kind::selfTest, .snapshotPath = "a" } },
        { { "--snapshot", "--self-test" }, { .kind = Kind::selfTest, .snapshotPath = "--self-test" } },
        { { "a", "--self-test", "--snapshot" }, { .kind = Kind::selfTest } },
    });
}

TEST(Arguments, EverythingElseStartsTheApplication)
{
    expectRoutes({
        { {}, {} },
        { { "--snapshot", "a" }, {} },
        { { "-x", "--background", "--snapshot" }, { .background = true } },
        { { "OSTREL:b", "--background", "-ostrel:", "ostrel", "ostrel://a", "ostrels:" },
            { .background = true, .urls = { "OSTREL:b", "ostrel://a" } } },
    });
}

} // namespace
