// SPDX-License-Identifier: Apache-2.0
#include "janitor/ProtectionList.h"

#include "support/FakeUserDefaults.h"

#include <functional>
#include <regex>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace std::string_literals;
using Names = std::vector<std::string>;

struct Bench {
    FakeUserDefaults defaults;
    ProtectionList list { defaults };
};

TEST(ProtectionList, HoldsForAnyNameAndCommandLine)
{
    Bench bench;
    for (const char* name : { "node", "a.b*", "žluťoučký kůň", "two words", "(" })
        bench.list.add(name);
    struct Case {
        std::string name, cmd;
        bool kept;
    };
    std::string longLine;
    while (longLine.size() < 100'000)
        longLine += "/claude-/x.claude ortclaude";
    const Case cases[] {
        { "Finder", "", true },
        { "CLAUDE", "", true },
        { "claude-runner", "", false },
        { "worker", "/System/Library/x y", true },
        { "worker", "   /usr/sbin/x", true },
        { "worker", "/system/library/x", false },
        { "worker", "/bin/sh /System/x", false },
        { "worker", "\t/System/x", false },
        { "worker", "x\t/usr/libexec/y", false },
        { "com.apple.x", "", true },
        { "Com.Apple.x", "", false },
        { "worker", "com.apple.x", false },
        { "worker", "/usr/local/bin/claude --resume", true },
        { "worker", "node claude", true },
        { "worker", "x\tCodex\ny", true },
        { "worker", "claude", true },
        { "worker", "/opt/claude/server", false },
        { "worker", "run claude-runner", false },
        { "worker", "xclaude", false },
        { "worker", "--agent=claude", false },
        { "worker", "run orca", true },
        { "worker", "/opt/Ostrel App", true },
        { "worker", "/opt/myostrel app", false },
        { "worker", "/opt/ostrel apps", true },
        { "worker", "x\u00a0claude\u2003y", true }, // blanks of other scripts
        { "worker", "axb*", false },
        { "worker", "a.b*", true },
        { "worker", "run (", true },
        { "worker", "two\twords", false },
        { "worker", "/x/ŽLUŤOUČKÝ KŮŇ \xff\xc3", true }, // broken bytes don't hide the rest
        { "worker", "\xff\xfe claude", true },
        { "worker", "\xff"s + "claude", false },
        { "worker", "a\0claude"s, false },
        { "worker", "x\0 claude"s, true },
        { "worker", longLine, false },
        { "worker", longLine + "\nclaude", true },
        { longLine, "claude\v" + longLine, true },
        { "", "", false },
        { "worker", "server.js --port 80", false },
    };
    for (const Case& c : cases)
        EXPECT_EQ(bench.list.isProtected(c.name, c.cmd), c.kept)
            << c.name.substr(0, 99) << " · " << c.cmd.substr(0, 99);
}

TEST(ProtectionList, ARowMatchesExactlyWhereTheRegularExpressionWould)
{
    constexpr std::string_view signs = "ab./ \t\n";
    for (const std::string row : { "a", "a.", "a a", "aa", "/a", " " }) {
        const std::regex expression(
            "(^|/|\\s)" + std::regex_replace(row, std::regex("[./ ]"), "[$&]") + "(\\s|$)");
        const ProtectionRules rules({ row });
        std::size_t matches = 0;
        const std::function<void(const std::string&)> compare = [&](const std::string& line) {
            const bool expected = std::regex_search(line, expression);
            matches += expected;
            ASSERT_EQ(rules.protects("?", line), expected) << row << " in " << line;
            for (const char sign : signs)
                if (line.size() < 4)
                    compare(line + sign);
        };
        compare("");
        EXPECT_GT(matches, 5U) << row;
    }
}

TEST(ProtectionList, TheUserAddsNamesAndSwitchesDefaultsButNeverTheLocked)
{
    struct Case {
        const char* what;
        std::function<void(ProtectionList&)> act;
        Names extra, disabled;
    };
    const Case cases[] {
        { "add", [](auto& list) { list.add(" Node\n"); }, { "node" }, {} },
        { "add twice", [](auto& list) { list.add("node"), list.add("NODE "); }, { "node" }, {} },
        { "add blanks", [](auto& list) { list.add(" \t"); }, {}, {} },
        { "add locked", [](auto& list) { list.add("Claude"); }, {}, {} },
        { "add default", [](auto& list) { list.add("orca"); }, {}, {} },
        { "switch off", [](auto& list) { list.remove("Finder"); }, {}, { "finder" } },
        { "and on", [](auto& list) { list.remove("finder"), list.add("Finder "); }, {}, {} },
        { "remove locked", [](auto& list) { list.remove("CLAUDE"), list.remove("ostrel app"); }, {}, {} },
        { "remove unknown", [](auto& list) { list.remove("node"); }, {}, {} },
        { "remove added", [](auto& list) { list.add("x"), list.add("Y"), list.remove("X"); }, { "y" }, {} },
        { "no trimming", [](auto& list) { list.remove("finder "); }, {}, {} },
    };
    for (const Case& c : cases) {
        Bench bench;
        c.act(bench.list);
        EXPECT_EQ(bench.list.extra(), c.extra) << c.what;
        EXPECT_EQ(bench.list.disabled(), c.disabled) << c.what;
        for (const std::string& name : c.extra)
            EXPECT_TRUE(bench.list.isProtected(name, "")) << c.what;
        for (const std::string& name : c.disabled)
            EXPECT_FALSE(bench.list.isProtected(name, name)) << c.what;
    }
}

TEST(ProtectionList, WhatIsStoredByAnyHandIsReadInLowerCaseAndLiftsNoLock)
{
    Bench bench;
    bench.defaults.setTextArray("ostrel.protectedExtra", { "MyServer", "hidden" });
    bench.defaults.setTextArray("ostrel.protectedDisabled", { "Claude", "ostrel", "ORCA", "Hidden" });
    EXPECT_EQ(bench.list.effective(),
        (Names { "claude", "codex", "ostrel", "ostrel app", "finder", "launchd", "loginwindow",
            "windowserver", "kernel_task", "myserver" }));
    Names shown = bench.list.effective();
    std::erase(shown, "ostrel");
    EXPECT_EQ(bench.list.displayList(), shown);
    bench.list.add("orca");
    EXPECT_EQ(bench.list.disabled(), (Names { "claude", "ostrel", "hidden" })) << "written in lower case";
    bench.defaults.setText("ostrel.protectedExtra", "not a list");
    EXPECT_TRUE(bench.list.extra().empty());
}

} // namespace
