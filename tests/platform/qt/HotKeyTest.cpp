// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/KeyPositions.h"
#include "platform/qt/PortalTrigger.h"
#include "platform/qt/X11HotKey.h"

#include "platform/qt/DisplayBench.h"

#include <array>
#include <cstdlib>
#include <set>

namespace {

using namespace platform;
using Event = X11HotKey::Event;

constexpr std::uint64_t option = ModifierFlag::option, command = ModifierFlag::command,
                        shift = ModifierFlag::shift, control = ModifierFlag::control;
/// The display's numbers of keys.
constexpr std::uint8_t keyM = 58, keyP = 33, keyAlt = 64, keySuper = 133, keyShift = 50, keyControl = 37,
                       keyCaps = 66, keyNum = 77, keyOther = 52;
const HotKey wish { 46, option | command, "m" };

TEST(KeyPositions, EachPlaceHasOneNumberOnEitherSide)
{
    int places = 0;
    for (std::uint32_t code = 0; code < 256; ++code)
        if (const auto key = xKeyOf(code)) {
            ++places;
            EXPECT_EQ(keyCodeOf(*key), code);
        }
    EXPECT_EQ(places, 106);
    for (const auto& [code, key] : { std::pair { 46U, 58 }, { 35U, 33 }, { 49U, 65 }, { 53U, 9 }, { 51U, 22 },
             { 117U, 119 }, { 123U, 113 }, { 126U, 111 }, { 36U, 36 }, { 122U, 67 }, { 20U, 12 } })
        EXPECT_EQ(xKeyOf(code), key) << code;
    EXPECT_EQ(keyCodeOf(0), std::nullopt);
    EXPECT_EQ(keyCodeOf(keyAlt), std::nullopt);
}

TEST(PortalTrigger, NamesTheKeyAsKeyboardLayoutsDo)
{
    for (const auto& [flags, character, trigger] :
        std::vector<std::tuple<std::uint64_t, const char*, const char*>> {
            { option | command, "m", "ALT+LOGO+m" },
            { control | option | shift | command, "f12", "CTRL+ALT+SHIFT+LOGO+F12" },
            { option, "f", "ALT+f" }, { control, "space", "CTRL+space" }, { control, "←", "CTRL+Left" },
            { option, ":", "ALT+colon" }, { option, "ö", "ALT+U00F6" } })
        EXPECT_EQ(portalTrigger({ 0, flags, character }), trigger);
}

class X11HotKeyOnADisplay : public DisplayBench {
protected:
    /// The keyboard's keys go down in this order, and up again.
    void strike(const std::vector<std::uint8_t>& keys)
    {
        for (const std::uint8_t key : keys)
            pretend(XCB_KEY_PRESS, key);
        for (auto key = keys.rbegin(); key != keys.rend(); ++key)
            pretend(XCB_KEY_RELEASE, *key);
    }

    /// How often the hotkey was pressed since the last look.
    int pressed()
    {
        int count = 0;
        settle([&](const xcb_generic_event_t& event) {
            const Event kind = hotKey.handle(event);
            count += kind == Event::pressed;
            changes += kind == Event::keyboardChanged;
        });
        return count;
    }

    /// Puts one sign on a key of the keyboard.
    void put(std::uint8_t key, xcb_keysym_t sign)
    {
        xcb_change_keyboard_mapping(other.get(), 1, key, 1, &sign);
    }

    X11HotKey hotKey { own.get() };
    int changes = 0;
};

TEST_F(X11HotKeyOnADisplay, ThePressComesWithEveryStateOfTheLocksAndForNoOtherCombination)
{
    strike({ keyAlt, keySuper, keyM });
    EXPECT_EQ(pressed(), 0) << "nothing is registered";
    for (const std::vector<std::uint8_t>& locks :
        std::vector<std::vector<std::uint8_t>> { {}, { keyCaps }, { keyNum }, { keyCaps, keyNum } }) {
        // Anew each time: no hand presses twice within a millisecond.
        ASSERT_TRUE(hotKey.grab(wish));
        for (const std::uint8_t lock : locks)
            strike({ lock });
        strike({ keyAlt, keySuper, keyM });
        EXPECT_EQ(pressed(), 1) << locks.size();
        for (const std::uint8_t lock : locks)
            strike({ lock });
    }
    for (const std::vector<std::uint8_t>& keys : std::vector<std::vector<std::uint8_t>> { { keyM },
             { keyAlt, keyM }, { keySuper, keyM }, { keyAlt, keySuper, keyShift, keyM },
             { keyAlt, keySuper, keyP }, { keyControl, keyAlt, keyM } }) {
        strike(keys);
        EXPECT_EQ(pressed(), 0) << keys.size();
    }
    ASSERT_TRUE(hotKey.grab({ 35, control | option, "p" }));
    strike({ keyAlt, keySuper, keyM });
    EXPECT_EQ(pressed(), 0) << "the one before is let go";
    strike({ keyControl, keyAlt, keyP });
    EXPECT_EQ(pressed(), 1);
    hotKey.release();
    EXPECT_FALSE(hotKey.isHeld());
    strike({ keyControl, keyAlt, keyP });
    EXPECT_EQ(pressed(), 0);
    EXPECT_FALSE(hotKey.grab({ 999, option, "?" })) << "no keyboard has such a key";
}

TEST_F(X11HotKeyOnADisplay, AKeyThatStaysDownIsPressedOnce)
{
    ASSERT_TRUE(hotKey.grab(wish));
    const auto tell = [&](std::uint8_t kind, xcb_timestamp_t time) {
        const xcb_key_press_event_t event {
            .response_type = kind, .detail = keyM, .time = time, .event = rootWindow(own.get())
        };
        return hotKey.handle(reinterpret_cast<const xcb_generic_event_t&>(event)) == Event::pressed;
    };
    EXPECT_TRUE(tell(XCB_KEY_PRESS, 1000));
    EXPECT_FALSE(tell(XCB_KEY_PRESS, 1660)) << "repeated without a release";
    EXPECT_FALSE(tell(XCB_KEY_PRESS, 1700));
    EXPECT_FALSE(tell(XCB_KEY_RELEASE, 1740));
    EXPECT_FALSE(tell(XCB_KEY_PRESS, 1740)) << "repeated with a release of the same moment";
    EXPECT_FALSE(tell(XCB_KEY_RELEASE, 1760));
    EXPECT_TRUE(tell(XCB_KEY_PRESS, 1790)) << "again, and quickly";
    EXPECT_TRUE(tell(XCB_KEY_PRESS, 4000)) << "its release went to another program";
}

TEST_F(X11HotKeyOnADisplay, WhatAnotherProgramHasIsRefusedWholeAndCanBeHadOnceItIsFree)
{
    const xcb_window_t root = rootWindow(other.get());
    // With num lock on alone, as a careless program may have it.
    constexpr std::uint16_t modifiers = XCB_MOD_MASK_1 | XCB_MOD_MASK_4 | XCB_MOD_MASK_2;
    xcb_grab_key(other.get(), 0, root, modifiers, keyM, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    roundTrip(other.get());
    EXPECT_FALSE(hotKey.grab(wish));
    EXPECT_FALSE(hotKey.isHeld());
    strike({ keyAlt, keySuper, keyM });
    EXPECT_EQ(pressed(), 0) << "nothing of it is kept";
    EXPECT_TRUE(hotKey.grab({ 35, option | command, "p" }));
    xcb_ungrab_key(other.get(), keyM, root, modifiers);
    roundTrip(other.get());
    EXPECT_TRUE(hotKey.grab(wish));
    X11HotKey second(other.get());
    EXPECT_FALSE(second.grab(wish)) << "and is then ours";
}

TEST_F(X11HotKeyOnADisplay, AnotherLayoutLeavesTheHotkeyOnItsKeyAndMovedModifiersAreFollowed)
{
    ASSERT_TRUE(hotKey.grab(wish));
    constexpr xcb_keysym_t cyrillic = 0x06d8;
    put(keyM, cyrillic);
    put(keyOther, 'm');
    EXPECT_EQ(pressed(), 0);
    EXPECT_GT(changes, 0);
    EXPECT_TRUE(hotKey.follow());
    strike({ keyAlt, keySuper, keyM });
    EXPECT_EQ(pressed(), 1);
    strike({ keyAlt, keySuper, keyOther });
    EXPECT_EQ(pressed(), 0);

    // The super key moves from the fourth modifier to the third.
    const std::array<xcb_keycode_t, 8> moved { keyShift, keyCaps, keyControl, keyAlt, keyNum, keySuper, 0,
        0 };
    std::free(xcb_set_modifier_mapping_reply(
        other.get(), xcb_set_modifier_mapping(other.get(), 1, moved.data()), nullptr));
    strike({ keyAlt, keySuper, keyM });
    EXPECT_EQ(pressed(), 0);
    EXPECT_TRUE(hotKey.follow());
    strike({ keyAlt, keySuper, keyM });
    EXPECT_EQ(pressed(), 1);
}

} // namespace
