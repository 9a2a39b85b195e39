// SPDX-License-Identifier: Apache-2.0
#include "panel/SourcedRow.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Text = std::optional<std::string>;

TEST(SourcedRow, NamesTheSourceBeforeItsFirstSemicolonAndSaysWhenNothingWasMeasured)
{
    struct Case {
        Text value;
        Text source;
        const char* shown;
        const char* line;
        const char* toolTip;
    };
    const char* none = "the collector published no method for this reading";
    const Case cases[] {
        { "7", "ps ; by name; all users", "7", "src: ps · 3s ago", "ps ; by name; all users" },
        { "7", " statvfs ", "7", "src: statvfs · 3s ago", " statvfs " },
        { "7", {}, "7", "src: not published by the collector", none },
        { "", "ps", "", "src: ps · 3s ago", "ps" },
        { {}, "ps; by name", "–", "not measured this run · ps", "ps; by name" },
        { {}, {}, "–", "not measured · the collector publishes no method for this reading", none },
    };
    for (const Case& c : cases)
        EXPECT_EQ(kvSourced("label", c.value, c.source, "3s ago"),
            (SourcedRow { "label", c.shown, { c.line, c.toolTip } }))
            << c.line;
}

TEST(SourcedRow, ASourceLineHasTheAgeInItsToolTip)
{
    EXPECT_EQ(sourceLine("a;b", "live"), (SourceLine { "src: a · live", "a;b\nlive" }));
    EXPECT_EQ(sourceLine({}, "live"),
        (SourceLine {
            "src: not published by the collector", "the collector published no method for this reading" }));
}

} // namespace
