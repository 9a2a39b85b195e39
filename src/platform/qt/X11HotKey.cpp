// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/X11HotKey.h"

#include "platform/qt/KeyPositions.h"
#include "platform/qt/Xcb.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

namespace {

constexpr xcb_keysym_t altLeft = 0xffe9, altRight = 0xffea, superLeft = 0xffeb, superRight = 0xffec,
                       numLock = 0xff7f, scrollLock = 0xff14;
constexpr int modifierCount = 8;

/// Longer than any key waits until it repeats. The news of a release gets lost when another program takes the
/// whole keyboard meanwhile.
constexpr xcb_timestamp_t longestPause = 2000; // ms

/// Of the keyboard extension's events the two that tell of another keyboard or of another layout.
constexpr std::uint8_t newKeyboard = 0, newMap = 1;

bool oneOf(std::span<const xcb_keysym_t> signs, xcb_keysym_t first, xcb_keysym_t second)
{
    return std::ranges::any_of(
        signs, [first, second](xcb_keysym_t sign) { return sign == first || sign == second; });
}

/// The lowest of the bits, or what keyboards mostly have.
std::uint16_t lowest(unsigned bits, xcb_mod_mask_t usual)
{
    return static_cast<std::uint16_t>(bits ? bits & (~bits + 1) : unsigned { usual });
}

} // namespace

X11HotKey::X11HotKey(xcb_connection_t* connection)
    : connection_(connection)
    , root_(rootWindow(connection))
{
    constexpr std::string_view name = "XKEYBOARD";
    const auto extension = answerTo(connection,
        xcb_query_extension(connection, static_cast<std::uint16_t>(name.size()), name.data()),
        xcb_query_extension_reply);
    if (extension && extension->present)
        keyboardEvents_ = extension->first_event;
}

bool X11HotKey::grab(const HotKey& hotKey)
{
    release();
    const auto key = xKeyOf(hotKey.keyCode);
    const xcb_setup_t& setup = *xcb_get_setup(connection_);
    if (!key || *key < setup.min_keycode || *key > setup.max_keycode)
        return false;
    held_ = hotKey;
    key_ = *key;
    modifiers_ = readModifiers();
    return grabAll();
}

void X11HotKey::release()
{
    if (std::exchange(held_, std::nullopt)) {
        xcb_ungrab_key(connection_, key_, root_, XCB_MOD_MASK_ANY);
        xcb_flush(connection_);
    }
    down_ = false;
    releasedAt_.reset();
}

bool X11HotKey::grabAll()
{
    const std::uint64_t flags = held_->modifierFlags;
    const unsigned wanted = ((flags & ModifierFlag::shift) ? unsigned { XCB_MOD_MASK_SHIFT } : 0U)
        | ((flags & ModifierFlag::control) ? unsigned { XCB_MOD_MASK_CONTROL } : 0U)
        | ((flags & ModifierFlag::option) ? unsigned { modifiers_.option } : 0U)
        | ((flags & ModifierFlag::command) ? unsigned { modifiers_.command } : 0U);
    // The display compares all modifiers, so each state of the locks is a combination of its own.
    std::vector<xcb_void_cookie_t> asked;
    for (unsigned locks = modifiers_.locks;; locks = (locks - 1) & modifiers_.locks) {
        asked.push_back(xcb_grab_key_checked(connection_, 0, root_,
            static_cast<std::uint16_t>(wanted | locks), key_, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        if (locks == 0)
            break;
    }
    bool taken = true;
    for (const xcb_void_cookie_t cookie : asked)
        if (xcb_generic_error_t* const error = xcb_request_check(connection_, cookie)) {
            taken = false;
            std::free(error);
        }
    if (!taken)
        release();
    return taken;
}

X11HotKey::Modifiers X11HotKey::readModifiers() const
{
    const xcb_setup_t& setup = *xcb_get_setup(connection_);
    const auto mappingAsked = xcb_get_modifier_mapping(connection_);
    const auto signsAsked = xcb_get_keyboard_mapping(
        connection_, setup.min_keycode, static_cast<std::uint8_t>(setup.max_keycode - setup.min_keycode + 1));
    const auto mapping = answerTo(connection_, mappingAsked, xcb_get_modifier_mapping_reply);
    const auto signs = answerTo(connection_, signsAsked, xcb_get_keyboard_mapping_reply);
    unsigned option = 0, command = 0, locks = XCB_MOD_MASK_LOCK;
    const std::size_t width = signs ? signs->keysyms_per_keycode : 0;
    const std::size_t columns = mapping && signs ? mapping->keycodes_per_modifier : 0;
    for (std::size_t at = 0; at < modifierCount * columns; ++at) {
        const xcb_keycode_t key = xcb_get_modifier_mapping_keycodes(mapping.get())[at];
        if (key < setup.min_keycode)
            continue;
        const std::span<const xcb_keysym_t> on(
            xcb_get_keyboard_mapping_keysyms(signs.get()) + (key - setup.min_keycode) * width, width);
        const unsigned bit = 1U << (at / columns);
        option |= oneOf(on, altLeft, altRight) ? bit : 0U;
        command |= oneOf(on, superLeft, superRight) ? bit : 0U;
        locks |= oneOf(on, numLock, scrollLock) ? bit : 0U;
    }
    const Modifiers read { lowest(option, XCB_MOD_MASK_1), lowest(command, XCB_MOD_MASK_4), 0 };
    constexpr unsigned named = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL;
    return { read.option, read.command,
        static_cast<std::uint16_t>(locks & ~(named | read.option | read.command)) };
}

X11HotKey::Event X11HotKey::handle(const xcb_generic_event_t& event)
{
    const std::uint8_t kind = kindOf(event);
    // A program that the toolkit has chosen the extension's events for gets them in place of the older one.
    const bool extended = keyboardEvents_ != 0 && kind == keyboardEvents_
        && (event.pad0 == newKeyboard || event.pad0 == newMap);
    if (kind == XCB_MAPPING_NOTIFY || extended)
        return Event::keyboardChanged;
    if (!held_ || (kind != XCB_KEY_PRESS && kind != XCB_KEY_RELEASE))
        return Event::other;
    const auto& press = as<xcb_key_press_event_t>(event);
    if (press.event != root_ || press.detail != key_)
        return Event::other;
    if (kind == XCB_KEY_RELEASE) {
        down_ = false;
        releasedAt_ = press.time;
        return Event::other;
    }
    const bool repeat = isRepeat(press);
    down_ = true;
    pressedAt_ = press.time;
    return repeat ? Event::other : Event::pressed;
}

bool X11HotKey::isRepeat(const xcb_key_press_event_t& press) const
{
    // To a program that didn't ask otherwise each repetition is a release and a press of the same moment.
    return (down_ && press.time - pressedAt_ < longestPause) || releasedAt_ == press.time;
}

bool X11HotKey::follow()
{
    if (!held_ || readModifiers() == modifiers_)
        return true;
    return grab(HotKey(*held_));
}

} // namespace platform
