// SPDX-License-Identifier: Apache-2.0
#include "bar/HotkeyController.h"

#include "bar/BarBench.h"
#include "support/FakeHotKeyCenter.h"
#include "support/FakeSurfaceHosts.h"

#include <gtest/gtest.h>

#include <memory>
#include <tuple>

#include <fmt/format.h>

namespace {

using namespace ostrel;
using Calls = std::vector<std::string>;
using platform::HotKeyRefusal;
using Kind = platform::HotKeyStanding::Kind;

constexpr const char* hotkeyKey = "dev.quent.ostrel.hotkey";
constexpr const char* clearedKey = "dev.quent.ostrel.hotkey-cleared";
constexpr std::uint64_t option = OstrelHotkey::option, command = OstrelHotkey::command,
                        shift = OstrelHotkey::shift;
constexpr std::uint64_t both = option | command;

struct HotkeyBench : StateBench {
    explicit HotkeyBench(bool isOffscreen = false)
        : offscreen(isOffscreen)
        , hotkeys({ settings, center, keys, files, door, panel, { .sillon = [this] { return sillon; } },
              [this] { door.calls.emplace_back("keys"); },
              [this] { door.calls.emplace_back("bar"), panel.calls.emplace_back("bar"); } })
    {
        if (offscreen)
            hotkeys.setOffscreen();
    }

    /// The launch with what is stored.
    void launch()
    {
        settings.loadSettings(tick);
        hotkeys.start();
        hotkeys.applyHotkey();
    }
    bool press(std::uint32_t keyCode, std::uint64_t flags, const char* characters)
    {
        const platform::KeyDown key { keyCode, flags, characters };
        // Nobody listens to a keyboard that isn't there.
        return offscreen ? hotkeys.captureHotkey(key) : keys.press(key);
    }
    /// What is held by the desktop, is stored, and is told; with a star while the recorder is armed.
    [[nodiscard]] std::string told() const
    {
        const auto stored = [this](const char* key) { return defaults.text(key).value_or("-"); };
        const auto cleared = defaults.boolean(clearedKey);
        return fmt::format("{} {}{}{} {}",
            center.registered ? (OstrelHotkey { center.registered->keyCode, center.registered->modifierFlags,
                                     center.registered->character })
                                    .display()
                              : "nothing",
            stored(hotkeyKey), cleared ? (*cleared ? " cleared" : " kept") : "",
            hotkeys.hotkeyRecording() ? "*" : "", hotkeys.hotkeyError());
    }
    [[nodiscard]] std::string line() const { return hotkeys.section().line; }
    Calls calls() { return std::exchange(door.calls, {}); }

    FakeHotKeyCenter center;
    FakeSurfaceHosts keys;
    FakeDoor door;
    FakePanel panel;
    std::optional<FamilyHotkeys::Combos> sillon;
    bool offscreen;
    HotkeyController hotkeys;
};

struct LaunchedBench : HotkeyBench {
    explicit LaunchedBench(bool isOffscreen = false)
        : HotkeyBench(isOffscreen)
    {
        launch();
    }
};

TEST(HotkeyController, TheLaunchTakesTheStoredCombinationOrElseTheShippedOne)
{
    using Case = std::tuple<std::optional<std::string>, bool, std::vector<std::uint32_t>, std::string, int>;
    for (const auto& [stored, cleared, taken, told, asked] : std::vector<Case> {
             { std::nullopt, false, {}, "⌥⌘m - ", 1 },
             { "35:1572864:p", false, {}, "⌥⌘p 35:1572864:p ", 1 },
             { "35:1572864", false, {}, "⌥⌘m 35:1572864 ", 1 },
             { "35:1572864:p", true, {}, "nothing 35:1572864:p cleared ", 0 },
             { "35:1572864:p", false, { 35 }, "⌥⌘m 46:1572864:m ⌥⌘p: held by another app", 2 },
             { "35:1572864:p", false, { 35, 46 }, "nothing 35:1572864:p ⌥⌘p: held by another app", 2 },
             { std::nullopt, false, { 46 }, "nothing - ⌥⌘m: held by another app", 1 },
         }) {
        HotkeyBench bench;
        if (stored)
            bench.defaults.setText(hotkeyKey, *stored);
        if (cleared)
            bench.defaults.setBoolean(clearedKey, true);
        bench.center.taken = { taken.begin(), taken.end() };
        bench.launch();
        EXPECT_EQ(bench.told(), told);
        EXPECT_EQ(bench.center.asked, asked) << told;
    }
    LaunchedBench bench;
    bench.center.events.pressed();
    EXPECT_EQ(bench.calls(), Calls { "toggle" });
    auto gone = std::make_unique<LaunchedBench>();
    const auto orphan = gone->center.events;
    gone.reset();
    orphan.pressed();
    orphan.changed();
    orphan.refused(HotKeyRefusal::held);
}

TEST(HotkeyController, TheRecorderTakesWhatTheRulesAndTheDesktopAllowAndStaysArmedOtherwise)
{
    LaunchedBench bench;
    EXPECT_FALSE(bench.press(35, both, "p")) << "not armed";
    bench.hotkeys.recordHotkey();
    EXPECT_EQ(bench.calls(), Calls { "keys" });
    EXPECT_EQ(bench.told(), "⌥⌘m -* ");
    bench.center.taken = { 40 };
    for (const auto& [keyCode, flags, characters, told] : {
             std::tuple { 35U, std::uint64_t { 0 }, "p", "⌥⌘m -* p: needs a modifier: hold ⌥ or ⌃" },
             { 46U, command, "m", "⌥⌘m -* ⌘m: needs two modifiers, one alone belongs to the front app" },
             { 20U, shift | command, "#", "⌥⌘m -* ⇧⌘#: taken by macOS screenshot" },
             { 32U, both, "u", "⌥⌘m -* ⌥⌘u: taken by Sillon" },
             { 40U, both, "k", "⌥⌘m -* ⌥⌘k: held by another app" },
             { 55U, both, "", "⌥⌘m -* ⌥⌘k: held by another app" }, // a modifier alone says nothing
         }) {
        EXPECT_TRUE(bench.press(keyCode, flags, characters)) << told;
        EXPECT_EQ(bench.told(), told);
    }
    EXPECT_TRUE(bench.calls().empty()) << "the bar says what it said";
    bench.sillon = FamilyHotkeys::Combos {};
    bench.panel.calls.clear();
    EXPECT_TRUE(bench.press(32, both | 0x10000, "U"));
    EXPECT_EQ(bench.told(), "⌥⌘u 32:1572864:u kept ");
    EXPECT_EQ(bench.panel.calls, (Calls { "render", "bar" }));
    EXPECT_EQ(bench.calls(), Calls { "bar" });
    EXPECT_EQ(bench.keys.keyMonitors.count(), 0);
    EXPECT_FALSE(bench.press(35, both, "p"));

    bench.hotkeys.recordHotkey();
    bench.hotkeys.armHotkeyRecorder();
    EXPECT_EQ(bench.keys.keyMonitors.count(), 1) << "armed once";
    bench.press(35, 0, "p");
    bench.press(53, 0, "\x1b");
    EXPECT_EQ(bench.told(), "⌥⌘u 32:1572864:u kept ") << "escape leaves all as it was";
    bench.hotkeys.recordHotkey();
    bench.press(35, 0, "p");
    bench.hotkeys.recordHotkey();
    EXPECT_EQ(bench.told(), "⌥⌘u 32:1572864:u kept ") << "and so does another press on the field";
}

TEST(HotkeyController, ARefusalNamesTheDesktopsOwnShortcutThatHasTheCombination)
{
    LaunchedBench bench;
    const std::string file
        = bench.files.home + "/.config/xfce4/xfconf/xfce-perchannel-xml/xfce4-keyboard-shortcuts.xml";
    bench.files.contents[file]
        = R"(<property name="&lt;Alt&gt;&lt;Super&gt;p" type="string" value="xfce4-display-settings"/>)";
    bench.hotkeys.pickHotkey("hotkey-choice-3");
    EXPECT_EQ(bench.told(), "⌥⌘p 35:1572864:p kept ") << "the desktop's answer counts, not its settings";
    bench.hotkeys.resetHotkey();
    bench.center.taken = { 35 };
    bench.hotkeys.pickHotkey("hotkey-choice-3");
    EXPECT_EQ(bench.told(), "⌥⌘m 46:1572864:m kept ⌥⌘p: taken by Xfce · xfce4-display-settings");
}

TEST(HotkeyController, DeleteClearsAndAChoiceOrTheDefaultEndsThat)
{
    for (const std::uint32_t key : { 51U, 117U }) {
        LaunchedBench bench;
        bench.hotkeys.recordHotkey();
        bench.calls();
        EXPECT_TRUE(bench.press(key, 0, "\x7f"));
        EXPECT_EQ(bench.told(), "nothing - cleared ");
        EXPECT_EQ(bench.calls(), Calls { "bar" });
        EXPECT_EQ(bench.settings.hotkey, OstrelHotkey::fallback());
        const auto section = bench.hotkeys.section();
        EXPECT_EQ(section.field + " | " + section.line,
            "none | panel: none · the bar item and the routes stay the way in");
        for (const auto& choice : section.choices)
            EXPECT_FALSE(choice.active) << choice.title;

        bench.center.taken = { 35 };
        bench.hotkeys.pickHotkey("hotkey-choice-3");
        EXPECT_EQ(bench.told(), "nothing - cleared ⌥⌘p: held by another app") << "no old one comes back";
        for (const char* nothing : { "", "hotkey-choice-", "hotkey-choice-4", "hotkey-choice--1",
                 "hotkey-choice-1x", "hotkey-choice-99999999999999999999", "choice-1" })
            bench.hotkeys.pickHotkey(nothing);
        EXPECT_EQ(bench.told(), "nothing - cleared ⌥⌘p: held by another app");
        bench.hotkeys.recordHotkey();
        bench.hotkeys.pickHotkey("hotkey-choice-2");
        EXPECT_EQ(bench.told(), "⌥⇧m 46:655360:m kept ") << "a choice ends the recording";
        EXPECT_TRUE(bench.hotkeys.section().choices[2].active);
        bench.hotkeys.recordHotkey();
        bench.press(key, 0, "");
        bench.hotkeys.resetHotkey();
        EXPECT_EQ(bench.told(), "⌥⌘m 46:1572864:m kept ");
    }
}

TEST(HotkeyController, TheSectionSaysWhatIsSoAndAsksTheSiblingsEachTime)
{
    LaunchedBench bench;
    auto section = bench.hotkeys.section();
    EXPECT_EQ(section.field + " | " + section.fieldLabel + " | " + section.line + " | " + section.error,
        "⌥⌘m | hotkey field · ⌥⌘m · press to record | panel: ⌥⌘m · opens and closes from anywhere | ");
    std::string choices;
    for (const auto& choice : section.choices)
        choices += fmt::format("{} {} {} '{}'{}; ", choice.identifier, choice.title,
            choice.accessibilityLabel, choice.tip, choice.active ? " active" : "");
    EXPECT_EQ(choices,
        "hotkey-choice-0 ⌥⌘m hotkey choice · ⌥⌘m 'take this combination' active; "
        "hotkey-choice-1 ⌃⌥m hotkey choice · ⌃⌥m 'take this combination'; "
        "hotkey-choice-2 ⌥⇧m hotkey choice · ⌥⇧m 'take this combination'; "
        "hotkey-choice-3 ⌥⌘p hotkey choice · ⌥⌘p 'take this combination'; ");
    bench.sillon = FamilyHotkeys::Combos { { 35, 2304 } };
    EXPECT_EQ(bench.hotkeys.section().choices[3].tip, "taken by Sillon");
    bench.hotkeys.recordHotkey();
    section = bench.hotkeys.section();
    EXPECT_EQ(section.field + " | " + section.fieldLabel + " | " + section.line,
        "press a combination | hotkey field · recording · press a combination, esc cancels, delete clears | "
        "recording · esc cancels · delete clears");
}

TEST(HotkeyController, WhereTheDesktopDecidesItsWordsStandInTheLine)
{
    LaunchedBench bench;
    const auto stands = [&](Kind kind, const char* name) {
        bench.center.stands = { kind, name };
        bench.center.events.changed();
        return bench.line();
    };
    EXPECT_EQ(stands(Kind::asked, ""), "panel: ⌥⌘m is asked for · the desktop has yet to say");
    EXPECT_EQ(stands(Kind::bound, "Alt+F9"), "panel: Alt+F9 · opens and closes from anywhere");
    EXPECT_EQ(stands(Kind::bound, ""), "panel: no key yet · the desktop's own settings give it one");
    bench.panel.calls.clear();
    bench.center.events.refused(HotKeyRefusal::declined);
    EXPECT_EQ(bench.told(), "⌥⌘m - ⌥⌘m: refused by the desktop");
    EXPECT_EQ(bench.panel.calls, Calls { "render" });
    bench.center.events.refused(HotKeyRefusal::unavailable);
    EXPECT_EQ(bench.hotkeys.hotkeyError(), "⌥⌘m: this desktop gives programs no hotkeys");
    EXPECT_EQ(
        bench.line(), "panel: none here · a shortcut of the desktop's own can call ostrel ostrel://toggle");
    EXPECT_EQ(stands(Kind::asked, ""), "panel: ⌥⌘m is asked for · the desktop has yet to say");
    EXPECT_EQ(bench.hotkeys.hotkeyError(), "") << "there is somebody to ask again";

    bench.center.why = HotKeyRefusal::unavailable;
    bench.hotkeys.pickHotkey("hotkey-choice-1");
    EXPECT_EQ(bench.told(), "nothing - ⌃⌥m: this desktop gives programs no hotkeys");
    EXPECT_EQ(
        bench.line(), "panel: none here · a shortcut of the desktop's own can call ostrel ostrel://toggle");
}

TEST(HotkeyController, OffscreenNothingIsStoredAndTheTableAloneCounts)
{
    LaunchedBench bench(true);
    const int writes = bench.defaults.writes;
    bench.sillon = FamilyHotkeys::Combos {};
    bench.hotkeys.recordHotkey();
    bench.press(32, both, "u");
    EXPECT_EQ(bench.hotkeys.hotkeyError(), "⌥⌘u: taken by Sillon");
    bench.press(35, both, "p");
    EXPECT_EQ(bench.settings.hotkey.display(), "⌥⌘p");
    bench.hotkeys.recordHotkey();
    bench.press(51, 0, "");
    EXPECT_TRUE(bench.settings.hotkeyCleared);
    EXPECT_EQ(bench.defaults.writes, writes);
}

} // namespace
