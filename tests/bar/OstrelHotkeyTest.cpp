// SPDX-License-Identifier: Apache-2.0
#include "bar/OstrelHotkey.h"
#include "bar/FamilyReaders.h"

#include "support/FakeFileManager.h"
#include "support/FakeUserDefaultsSuites.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace ostrel;
using FamilyHotkeys::Combos;

constexpr std::uint64_t shift = OstrelHotkey::shift, control = OstrelHotkey::control,
                        option = OstrelHotkey::option, command = OstrelHotkey::command;

TEST(OstrelHotkey, AKeyEventGivesTheKeysNameAndItsFourModifiers)
{
    constexpr std::uint64_t function = 0x800000, capsLock = 0x10000;
    struct Case {
        std::uint32_t keyCode;
        std::uint64_t flags;
        std::optional<std::string> characters;
        const char* display; ///< empty: no hotkey
    };
    for (const auto& [keyCode, flags, characters, display] : {
             Case { 46, option | command | function | capsLock, "M", "⌥⌘m" },
             { 49, option | command, " ", "⌥⌘space" },
             { 123, control | option | shift | command, "\x1c", "⌃⌥⇧⌘←" },
             { 111, 0, std::nullopt, "f12" },
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
    EXPECT_EQ(OstrelHotkey::fromEvent({ 46, option | command | function, "M" }), OstrelHotkey::fallback());
    std::string names;
    for (const std::uint32_t keyCode :
        { 49, 48, 36, 123, 124, 126, 125, 122, 120, 99, 118, 96, 97, 98, 100, 101, 109, 103, 111 })
        names += OstrelHotkey::name(keyCode, "x") + " ";
    EXPECT_EQ(names, "space tab return ← → ↑ ↓ f1 f2 f3 f4 f5 f6 f7 f8 f9 f10 f11 f12 ");
    std::string labels;
    for (const OstrelHotkey& choice : OstrelHotkey::canonical())
        labels += choice.display() + " ";
    EXPECT_EQ(labels, "⌥⌘m ⌃⌥m ⌥⇧m ⌥⌘p ");
    for (const auto& [keyCode, cancel, clear] : { std::tuple { 53U, true, false }, { 51U, false, true },
             { 117U, false, true }, { 46U, false, false } }) {
        EXPECT_EQ(OstrelHotkey::isCancel(keyCode), cancel) << keyCode;
        EXPECT_EQ(OstrelHotkey::isClear(keyCode), clear) << keyCode;
    }
}

TEST(OstrelHotkey, TheFirstRuleThatFiresSaysWhyACombinationIsRefused)
{
    const FamilyHotkeys::Holders table = FamilyHotkeys::holders(OstrelHotkey::owner, {});
    struct Case {
        std::uint32_t keyCode;
        std::uint64_t modifiers;
        std::string_view text; ///< empty: allowed
    };
    constexpr std::string_view two = "needs two modifiers, one alone belongs to the front app";
    constexpr std::string_view pair = "needs ⌥ or ⌃, a plain command pair belongs to the front app";
    for (const auto& [keyCode, modifiers, text] : {
             Case { 46, 0, "needs a modifier: hold ⌥ or ⌃" },
             { 46, 0x10000, "needs a modifier: hold ⌥ or ⌃" },
             { 46, command, two },
             { 8, option, two },
             { 20, shift | command, "taken by macOS screenshot" },
             { 49, shift | command, "taken by macOS finder search" },
             { 12, control | command, "taken by macOS lock screen" },
             { 53, option | command, "taken by macOS force quit" },
             { 46, shift | command, pair },
             { 8, option | command, "taken by Pellam Dial" },
             { 37, option | command, "taken by Tessit Loop" },
             { 0, option | command, "taken by Vormel Trim" },
             { 0, option | shift, "taken by Vormel Trim" },
             { 7, option | command, "taken by ruvane" },
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
                { "40:18446744073709551616:k", "absent" }, { " 40:5:k", "absent" },
                { "40:0x5:k", "absent" } }) {
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

} // namespace
