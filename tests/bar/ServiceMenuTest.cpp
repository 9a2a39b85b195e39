// SPDX-License-Identifier: Apache-2.0
#include "BarBench.h"

#include <memory>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

/// Each row as its title, "x" or "o" before it for a check, "-" for a grey one, a submenu in brackets.
std::string told(const platform::Menu& menu)
{
    std::string text;
    for (const platform::MenuItem& row : menu) {
        const std::string check = row.checked ? (*row.checked ? "x " : "o ") : "";
        const std::string grey = row.action || row.separator || !row.submenu.empty() ? "" : "- ";
        text += (row.separator ? "---" : grey + check + row.title) + "|";
        if (!row.submenu.empty())
            text += "[|" + told(row.submenu) + "]|";
    }
    return text;
}

const platform::MenuItem* find(const platform::Menu& menu, const std::string& title)
{
    for (const platform::MenuItem& row : menu) {
        if (row.title == title)
            return &row;
        if (const auto* inner = find(row.submenu, title))
            return inner;
    }
    return nullptr;
}

TEST(ServiceMenu, ShowsEveryChoiceAsItStands)
{
    BarBench bench;
    bench.setUp();
    bench.settings.barDisplayMode = BarDisplayMode::markValue;
    EXPECT_EQ(told(bench.bar.menu()),
        "- ostrel · cpu 0% · mem 0% · swap 0% · ?|---|show panel|actions|[|- audit MCP (read-only)|"
        "- preview own history|---|- compact own history…|]|settings|[|o pin panel open|o theme: black|---|"
        "o refresh: fast|x refresh: normal|o refresh: calm|---|- menu bar|- preview:  cpu 0% · swap 0%|"
        "x show cpu|o show mem|x show swap|o show load|o show mcp|---|- modes:|o mode: mark|"
        "x mode: mark + value|o mode: value|- hidden · in the panel settings, it asks first|---|"
        "- hotkey: ⌥⌘m · toggle panel|- esc · close panel|- 1–9 · switch tabs|- / · key help overlay|]|---|"
        "about ostrel|quit|");
    EXPECT_EQ(find(bench.bar.menu(), "theme: black")->toolTip,
        "theme: the panel in white or in black, the choice survives a restart");
    bench.door.black = bench.door.pin = true;
    bench.settings.hotkeyCleared = true;
    bench.defaults.setText("dev.quent.ostrel.refresh", "brisk");
    const platform::Menu menu = bench.bar.menu();
    EXPECT_TRUE(find(menu, "hotkey: none · toggle panel"));
    for (const auto& [title, on] : { std::pair { "unpin panel", true }, { "theme: black", true },
             { "refresh: fast", false }, { "refresh: normal", false } })
        EXPECT_EQ(find(menu, title)->checked, on) << title;
}

TEST(ServiceMenu, ItsRowsActEvenAfterTheNextRebuildButNotAfterItsEnd)
{
    BarBench bench;
    bench.setUp();
    int audits = 0;
    auto menu = std::make_unique<ServiceMenu>(ServiceMenu::Owner {
        bench.item, bench.settings, bench.tick, bench.door, bench.door, [&] { ++audits; }, {}, {}, {}, {} });
    const platform::Menu rows = menu->rebuildMenu();
    (void)menu->rebuildMenu();
    const auto press = [&](const char* title) { find(rows, title)->action(); };
    for (const char* title : { "show panel", "pin panel open", "theme: black", "refresh: calm", "show mem",
             "mode: value", "audit MCP (read-only)" })
        press(title);
    EXPECT_EQ(bench.door.calls, (std::vector<std::string> { "show", "pin", "black" }));
    EXPECT_EQ(bench.tick.nativeInterval().count(), 10);
    EXPECT_EQ(bench.face().label, "cpu 0% · mem 0% · swap 0%");
    EXPECT_EQ(audits, 1);
    menu.reset();
    press("show panel");
    press("mode: mark");
    EXPECT_EQ(bench.door.calls.size(), 3U);
    EXPECT_EQ(bench.settings.barDisplayMode, BarDisplayMode::value);
    bench.bar.menu().back().action();
    EXPECT_EQ(bench.door.calls.back(), "quit");
}

} // namespace
