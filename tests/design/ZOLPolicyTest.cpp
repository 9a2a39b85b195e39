// SPDX-License-Identifier: Apache-2.0
#include "design/ZOLPinPolicy.h"
#include "design/ZOLThemePolicy.h"

#include "support/FakeUserDefaults.h"

#include <optional>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

TEST(ZOLPinPolicy, AStoredPinCountsOnlyOnceTheOldOneWasTurnedOff)
{
    struct Case {
        std::optional<bool> stored;
        bool migrated;
        ZOLPinPolicy::PinResolution expected;
    };
    const Case cases[] {
        { std::nullopt, false, { false, true, true } },
        { false, false, { false, true, true } },
        { true, false, { false, true, true } },
        { std::nullopt, true, { false, false, false } },
        { false, true, { false, false, false } },
        { true, true, { true, false, false } },
    };
    for (const Case& c : cases)
        EXPECT_EQ(ZOLPinPolicy::resolve(c.stored, c.migrated), c.expected)
            << (c.stored ? *c.stored : -1) << " " << c.migrated;
}

TEST(ZOLPinPolicy, OnlyAShownUnpinnedPanelClosesOnAClickOutside)
{
    EXPECT_TRUE(ZOLPinPolicy::closesOnOutsideClick(false, true));
    EXPECT_FALSE(ZOLPinPolicy::closesOnOutsideClick(true, true));
    EXPECT_FALSE(ZOLPinPolicy::closesOnOutsideClick(false, false));
    EXPECT_FALSE(ZOLPinPolicy::closesOnOutsideClick(true, false));
}

TEST(ZOLPinPolicy, TheButtonShowsTheStateAndSaysWhatAPressDoes)
{
    EXPECT_EQ(ZOLPinPolicy::glyph(true), "◉");
    EXPECT_EQ(ZOLPinPolicy::glyph(false), "○");
    EXPECT_EQ(ZOLPinPolicy::accessibilityDescription(true), "unpin panel");
    EXPECT_EQ(ZOLPinPolicy::accessibilityDescription(false), "pin panel open");
}

TEST(ZOLThemePolicy, OnlyTheTwoStoredWordsNameAMode)
{
    using enum ZOLThemePolicy::Mode;
    const std::pair<std::optional<std::string_view>, ZOLThemePolicy::Mode> cases[] { { "dark", dark },
        { "light", light }, { "Dark", light }, { "black", light }, { " dark", light }, { "", light },
        { std::nullopt, light } };
    for (const auto& [raw, mode] : cases)
        EXPECT_EQ(ZOLThemePolicy::resolve(raw), mode) << raw.value_or("none");
    FakeUserDefaults defaults;
    EXPECT_EQ(ZOLThemePolicy::load(defaults, ZOLThemePolicy::key()), light);
    defaults.setText("dev.quent.ostrel.theme", ZOLThemePolicy::rawValue(dark));
    EXPECT_EQ(ZOLThemePolicy::load(defaults, ZOLThemePolicy::key()), dark);
    defaults.setBoolean("dev.quent.ostrel.theme", true);
    EXPECT_EQ(ZOLThemePolicy::load(defaults, ZOLThemePolicy::key()), light);
}

} // namespace
