// SPDX-License-Identifier: Apache-2.0
#include "panel/PanelKeys.h"
#include "panel/HelpText.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Kind = PanelKeyAction::Kind;

TEST(PanelKeys, AKeyDoesOneThingAndAFieldKeepsWhatIsTypedIntoIt)
{
    struct Case {
        PanelKey key;
        PanelKeyAction action;
    };
    const Case cases[] {
        { { .characters = "1" }, { Kind::tab, {}, OstrelMode::overview } },
        { { .characters = "9" }, { Kind::tab, {}, OstrelMode::settings } },
        { { .characters = "0" }, {} },
        { { .characters = "12" }, {} },
        { { .characters = "" }, {} },
        { { .characters = "3", .control = true }, {} },
        { { .characters = "3", .option = true }, {} },
        { { .characters = "3", .command = true }, {} },
        { { .characters = "3", .inTextField = true }, {} },
        { { .characters = "w", .command = true }, { Kind::close, "cmd-w" } },
        { { .characters = "w", .control = true }, { Kind::close, "cmd-w" } },
        { { .characters = "w" }, {} },
        { { .characters = "w", .control = true, .inTextField = true }, {} },
        { { .characters = "/" }, { Kind::help, {} } },
        { { .characters = "?", .control = true }, { Kind::help, {} } },
        { { .characters = "/", .inTextField = true }, {} },
        { { .characters = "\x1b", .escape = true }, { Kind::escape, "esc" } },
        { { .characters = "\x1b", .escape = true, .inTextField = true }, { Kind::escape, "esc-field" } },
    };
    for (const Case& one : cases)
        EXPECT_EQ(panelKeyAction(one.key), one.action) << one.key.characters << " " << one.key.inTextField;
}

TEST(PanelKeys, TheHelpNamesEveryTabByItsKey)
{
    const auto rows = helpRows();
    ASSERT_EQ(rows.size(), 18U);
    EXPECT_EQ(rows.front(), "panel keys");
    EXPECT_EQ(rows[2], "1    dashboard");
    EXPECT_EQ(rows[10], "9    settings");
    EXPECT_EQ(rows[13], "⌘w   close panel");
    EXPECT_EQ(rows.back(), "esc or click to close");
}

} // namespace
