// SPDX-License-Identifier: Apache-2.0
#include "bar/OstrelHotkey.h"
#include "bar/DesktopShortcuts.h"
#include "bar/FamilyReaders.h"

#include "support/FakeFileManager.h"
#include "support/FakeUserDefaultsSuites.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

using namespace ostrel;
using FamilyHotkeys::Combos;

constexpr std::uint64_t shift = OstrelHotkey::shift, control = OstrelHotkey::control,
                        option = OstrelHotkey::option, command = OstrelHotkey::command;

TEST(OstrelHotkey, AKeyEventGivesTheKeysNameAndItsFourModifiers)
{
    constexpr std::uint64_t function = 0x800000, capsLock = 0x10000;
    // An empty label stands for no hotkey.
    using Case = std::tuple<std::uint32_t, std::uint64_t, std::optional<std::string>, const char*>;
    for (const auto& [keyCode, flags, characters, display] : {
             Case { 46, option | command | function | capsLock, "M", "⌥⌘m" },
             { 49, option | command, " ", "⌥⌘space" },
             { 123, control | option | shift | command, "\x1c", "⌃⌥⇧⌘←" },
             { 41, option, "ÖX", "⌥ö" },
             { 41, option, ":", "⌥:" },
             { 50, option, std::nullopt, "" },
             { 50, option, "", "" },
             { 53, option, "\x1b", "" },
             { 51, option, "\x7f", "" },
             { 50, option, "\xff", "" },
         }) {
        const auto hotkey = OstrelHotkey::fromEvent({ keyCode, flags, characters });
        EXPECT_EQ(hotkey ? hotkey->display() : "", display) << keyCode;
        if (hotkey) {
            EXPECT_EQ(OstrelHotkey::fromStorage(hotkey->storage()), hotkey);
        }
    }
    std::string named; // which type nothing
    for (std::uint32_t keyCode = 0; keyCode < 128; ++keyCode)
        if (const auto hotkey = OstrelHotkey::fromEvent({ keyCode, 0, std::nullopt }))
            named += std::to_string(keyCode) + " " + hotkey->display() + ", ";
    EXPECT_EQ(named,
        "36 return, 48 tab, 49 space, 96 f5, 97 f6, 98 f7, 99 f3, 100 f8, 101 f9, 103 f11, 109 f10, 111 f12, "
        "118 f4, 120 f2, 122 f1, 123 ←, 124 →, 125 ↓, 126 ↑, ");
    EXPECT_EQ(OstrelHotkey::fromEvent({ 46, option | command | function, "M" }), OstrelHotkey::fallback());
    EXPECT_EQ((OstrelHotkey { 0, 0, "É" }).display(), "é") << "stored in capitals";
}

TEST(OstrelHotkey, TheFirstRuleThatFiresSaysWhyACombinationIsRefused)
{
    const FamilyHotkeys::Holders table = FamilyHotkeys::holders(OstrelHotkey::owner, {});
    using Case = std::tuple<std::uint32_t, std::uint64_t, std::string_view>; ///< an empty text allows it
    constexpr std::string_view two = "needs two modifiers, one alone belongs to the front app";
    constexpr std::string_view pair = "needs ⌥ or ⌃, a plain command pair belongs to the front app";
    for (const auto& [keyCode, modifiers, text] : {
             Case { 46, 0, "needs a modifier: hold ⌥ or ⌃" },
             { 46, 0x10000, "needs a modifier: hold ⌥ or ⌃" },
             { 8, option, two },
             { 46, shift | command, pair },
             { 49, shift | command, "taken by macOS finder search" },
             { 53, option | command, "taken by macOS force quit" },
             { 0, option | command, "taken by Vormel Trim" },
             { 0, option | shift, "taken by Vormel Trim" },
             { 32, option | command | 0x10000, "taken by Sillon" },
             { 8, option | command | shift, "" },
             { 46, option | command, "" },
         })
        EXPECT_EQ((OstrelHotkey { keyCode, modifiers, "x" }).conflict(table).value_or(""), text)
            << keyCode << " " << modifiers;
    EXPECT_EQ(FamilyHotkeys::signature(),
        "OSTREL=46/2304 Pellam Dial=8/2304 Tessit Loop=37/2304 Vormel Trim=0/2304+0/2560 ruvane=7/2304 "
        "Sillon=32/2304 macOS screenshot=20/768 macOS screenshot=21/768 macOS screenshot=23/768 macOS log "
        "out=12/768 macOS lock screen=12/4352 macOS full screen=3/4352 macOS dictionary=2/4352 macOS force "
        "quit=53/2304 macOS finder search=49/2304 macOS finder search=49/768");
}

TEST(FamilyHotkeys, ALiveAnswerReplacesTheTableAndAnEmptyOneFreesIt)
{
    FamilyHotkeys::Reader reader;
    const auto refusal = [&](std::uint32_t keyCode) {
        return FamilyHotkeys::refusal(
            { keyCode, 2304 }, FamilyHotkeys::holders(FamilyHotkeys::ruvane, reader))
            .value_or("");
    };
    EXPECT_EQ(refusal(7), "") << "the one that asks is left out";
    EXPECT_EQ(refusal(46), "taken by OSTREL");
    reader.pellamDial = [] { return Combos { { 40, 2304 }, { 53, 2304 } }; };
    EXPECT_EQ(refusal(40), "taken by Pellam Dial");
    EXPECT_EQ(refusal(53), "taken by Pellam Dial") << "before the system";
    EXPECT_EQ(refusal(8), "");
    reader.pellamDial = [] { return Combos {}; };
    EXPECT_EQ(refusal(40) + refusal(8), "");
    reader.pellamDial = [] { return std::nullopt; };
    EXPECT_EQ(refusal(8), "taken by Pellam Dial");
    EXPECT_EQ(FamilyHotkeys::holders(FamilyHotkeys::ruvane, reader).size(), 5U);
}

/// What a reader answers: "absent", "nothing" or the combinations.
std::string said(const FamilyHotkeys::Reader::Read& read)
{
    const auto answer = read();
    if (!answer)
        return "absent";
    std::string text;
    for (const FamilyCombo& combo : *answer)
        text += std::to_string(combo.keyCode) + "/" + std::to_string(combo.carbonModifiers) + " ";
    return text.empty() ? "nothing" : text;
}

TEST(FamilyReaders, WhatASiblingStoredIsReadAndAnythingBrokenIsAbsent)
{
    FakeUserDefaultsSuites suites;
    FakeFileManager files;
    const FamilyHotkeys::Reader reader = FamilyHotkeys::diskReader(suites, files);
    struct Stored {
        const FamilyHotkeys::Reader::Read& read;
        std::string suite, key;
        bool anyName; ///< the key's name is not looked at
    };
    for (const Stored& one : { Stored { reader.ostrel, "dev.quent.ostrel", "dev.quent.ostrel.hotkey", true },
             { reader.ruvane, "org.zolwerk.ruvane.bar", "org.zolwerk.ruvane.bar.hotkey", false },
             { reader.sillon, "org.zolwerk.sillon", "org.zolwerk.sillon.hotkey", false } }) {
        FakeUserDefaults& stored = suites.suites[one.suite];
        EXPECT_EQ(said(one.read), "absent") << one.suite;
        for (const auto& [text, answer] :
            std::vector<std::pair<const char*, const char*>> { { "40:1572864:k", "40/2304 " },
                { "40:786432::", "40/6144 " }, { "40:18446744073709551615:k", "40/6912 " },
                { "40:1572864:", one.anyName ? "40/2304 " : "absent" }, { "40:1572864", "absent" },
                { "", "absent" }, { "::", "absent" }, { "-1:5:k", "absent" }, { "4294967296:5:k", "absent" },
                { "40:18446744073709551616:k", "absent" }, { " 40:5:k", "absent" }, { "40 :5:k", "absent" },
                { "40:0x5:k", "absent" }, { "40:1.0:k", "absent" }, { "a:5:k", "absent" },
                { "40:b:k", "absent" }, { ":5:k", "absent" }, { "40::k", "absent" } }) {
            stored.setText(one.key, text);
            EXPECT_EQ(said(one.read), answer) << one.suite << " " << text;
        }
        stored.setNumber(one.key, 40);
        EXPECT_EQ(said(one.read), "absent") << one.suite;
        stored.setText(one.key, "40:1572864:k");
        stored.setBoolean(one.key + "-cleared", true);
        EXPECT_EQ(said(one.read), "nothing") << one.suite;
    }
    FakeUserDefaults& tessit = suites.suites["dev.quent.haldrin"];
    for (const auto& [word, answer] : std::vector<std::pair<const char*, const char*>> {
             { "option-command-l", "37/2304 " }, { "control-option-l", "37/6144 " },
             { "option-command-r", "15/2304 " }, { "option-command-k", "40/2304 " }, { "off", "nothing" },
             { "Off", "absent" }, { "", "absent" } }) {
        tessit.setText("globalHotkey", word);
        EXPECT_EQ(said(reader.tessitLoop), answer) << word;
    }

    EXPECT_EQ(said(reader.pellamDial), "absent");
    const std::string longest
        = R"({"hotKey":{"keyCode":40,"modifiers":2304},"x":")" + std::string(1 << 17, 'x') + "\"}";
    for (const auto& [text, answer] : std::vector<std::pair<std::string, const char*>> {
             { R"({"hotKey":{"keyCode":40,"modifiers":2304}})", "40/2304 " },
             { R"({"hotKey":{"keyCode":40.0,"modifiers":2304},"hotKeyCleared":"true"})", "40/2304 " },
             { R"({"hotKey":{"keyCode":40,"modifiers":2304},"hotKeyCleared":true})", "nothing" },
             { R"({"hotKey":{"keyCode":"40","modifiers":2304}})", "absent" },
             { R"({"hotKey":{"keyCode":-1,"modifiers":2304}})", "absent" },
             { R"({"hotKey":{"keyCode":4294967296,"modifiers":2304}})", "absent" },
             { R"({"hotKey":{"keyCode":1e300,"modifiers":2304}})", "absent" },
             { R"({"hotKey":{"keyCode":true,"modifiers":2304}})", "absent" },
             { R"({"hotKey":{"modifiers":2304}})", "absent" }, { R"({"hotKey":[40,2304]})", "absent" },
             { R"([{"hotKey":{"keyCode":40,"modifiers":2304}}])", "absent" }, { R"({"hotKey")", "absent" },
             { "", "absent" }, { std::string(3000, '['), "absent" }, { longest, "absent" } }) {
        files.contents["/home/someone/.config/pellam-dial/config.json"] = text;
        EXPECT_EQ(said(reader.pellamDial), answer) << text.substr(0, 60);
    }

    suites.closed = true;
    const FamilyHotkeys::Reader none = FamilyHotkeys::diskReader(suites, files);
    for (const auto* read : { &none.ostrel, &none.tessitLoop, &none.ruvane, &none.sillon })
        EXPECT_EQ(said(*read), "absent") << "where no suite can be opened";
}

constexpr const char* xfceText = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-keyboard-shortcuts" version="1.0">
  <property name="commands" type="empty"><property name="custom" type="empty">
      <property name="&lt;Alt&gt;&lt;Super&gt;m" type="string" value="music &amp; &quot;more&quot;"/>
      <property name="&lt;Primary&gt;&lt;Alt&gt;Left" type="string"
                value="go-left"/>
      <!-- <property name="&lt;Alt&gt;q" type="string" value="gone"/> -->
      <property name="&lt;Alt&gt;r" type="empty"/>
      <property name="&lt;Hyper&gt;h" type="string" value="no such modifier"/>
      <property name="override" type="bool" value="true"/>)";

constexpr const char* openboxText = R"(<openbox_config><keyboard>
  <keybind key="A-W-m A-F4"><action name="Close"/><action name="Raise"/></keybind>
  <keybind key='C-S-Up'>
    <action
      name="Execute"><command>x</command></action></keybind>
  <mousebind button="A-Left"><action name="Move"/></mousebind></keyboard>)";

constexpr const char* plasmaText = "[kwin]\n_k_friendly_name=KWin\n"
                                   "Overview=Meta+Alt+M\\tMeta+W,Meta+W,Toggle\\, the overview\n"
                                   "Nothing=none,none,Nothing\nshort=Ctrl+Alt+T\n=\nx\n";

constexpr const char* lxqtText = "[General]\nMultipleActionsBehaviour=first\n\n"
                                 "[Alt%2BMeta%2BM.41]\nComment=Music\nEnabled=true\nExec=player\n"
                                 "[Control%2BAlt%2BRight.42]\nEnabled=true\nExec=qdbus, x\n"
                                 "[Alt%2BF9.43]\nComment=Off\nEnabled=false\n[%2%zz";

TEST(DesktopShortcuts, EachDesktopsFileIsReadAsFarAsItCanBe)
{
    using Shortcuts = std::vector<DesktopShortcut>;
    EXPECT_EQ(DesktopShortcuts::xfce(xfceText),
        (Shortcuts { { option | command, "m", "music & \"more\"" }, { control | option, "←", "go-left" } }));
    EXPECT_EQ(DesktopShortcuts::openbox(openboxText),
        (Shortcuts { { option | command, "m", "Close" }, { option, "f4", "Close" },
            { control | shift, "↑", "Execute" } }));
    EXPECT_EQ(DesktopShortcuts::plasma(plasmaText),
        (Shortcuts { { command | option, "m", "Toggle, the overview" },
            { command, "w", "Toggle, the overview" }, { control | option, "t", "short" } }));
    EXPECT_EQ(DesktopShortcuts::lxqt(lxqtText),
        (Shortcuts { { option | command, "m", "Music" }, { control | option, "→", "qdbus, x" } }));

    // Cut anywhere, and with any byte in any place: nothing but what was there before comes of it.
    for (const auto& [parse, text] : { std::pair { &DesktopShortcuts::xfce, std::string(xfceText) },
             { &DesktopShortcuts::openbox, openboxText }, { &DesktopShortcuts::plasma, plasmaText },
             { &DesktopShortcuts::lxqt, lxqtText } })
        for (std::size_t at = 0; at < text.size(); ++at) {
            EXPECT_LE(parse(text.substr(0, at)).size(), 3U);
            for (const char odd : { '<', '\0', '\xff', '"', '\n' }) {
                std::string spoilt = text;
                spoilt[at] = odd;
                EXPECT_LE(parse(spoilt).size(), 4U);
            }
        }
}

TEST(DesktopShortcuts, TheHolderIsToldByTheSettingsOfTheDesktopThatRuns)
{
    FakeFileManager files;
    const auto holder = [&](const char* desktop, const OstrelHotkey& hotkey = OstrelHotkey::fallback()) {
        return DesktopShortcuts::holder(files, desktop, hotkey).value_or("");
    };
    EXPECT_EQ(holder("XFCE"), "");
    const std::string channel = "/xfce4/xfconf/xfce-perchannel-xml/xfce4-keyboard-shortcuts.xml";
    files.contents["/etc/xdg" + channel] = xfceText;
    files.contents["/etc/xdg/openbox/rc.xml"] = openboxText;
    files.contents[files.home + "/.config/kglobalshortcutsrc"] = plasmaText;
    files.contents[files.home + "/.config/lxqt/globalkeyshortcuts.conf"] = lxqtText;
    for (const auto& [desktop, name] : std::vector<std::pair<const char*, const char*>> {
             { "XFCE", "Xfce · music & \"more\"" }, { "ubuntu:xfce", "Xfce · music & \"more\"" },
             { "KDE", "Plasma · Toggle, the overview" }, { "LXQt", "LXQt · Music" }, { "", "" },
             { "LXDE:Openbox", "Openbox · Close" }, { "XFCE:Openbox", "Openbox · Close" } })
        EXPECT_EQ(holder(desktop), name) << desktop;
    EXPECT_EQ(holder("KDE", { 46, option | command | shift, "m" }), "");
    files.contents[files.home + "/.config" + channel]
        = R"(<property name="&lt;Alt&gt;&lt;Super&gt;m" type="string" value="mine"/>)";
    EXPECT_EQ(holder("XFCE"), "Xfce · mine") << "the user's own before what all begin with";
    files.contents[files.home + "/.config" + channel]
        = R"(<property name="&lt;Alt&gt;&lt;Super&gt;m" type="string" value=")" + std::string(200, 'x')
        + "\"/>";
    EXPECT_EQ(holder("XFCE"), "Xfce · " + std::string(48, 'x'));
    files.contents[files.home + "/.config" + channel] = std::string(1 << 20, '<');
    files.contents.erase("/etc/xdg" + channel);
    EXPECT_EQ(holder("XFCE:Openbox"), "Openbox · Close") << "too long to be read";
}

} // namespace
