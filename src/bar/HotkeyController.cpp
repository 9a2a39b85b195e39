// SPDX-License-Identifier: Apache-2.0
#include "bar/HotkeyController.h"

#include "bar/DesktopShortcuts.h"

#include <charconv>
#include <cstddef>
#include <optional>
#include <system_error>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

using platform::HotKeyRefusal;

std::optional<OstrelHotkey> choiceOf(std::string_view identifier)
{
    constexpr std::string_view prefix = "hotkey-choice-";
    if (!identifier.starts_with(prefix))
        return std::nullopt;
    identifier.remove_prefix(prefix.size());
    std::size_t at = 0;
    const auto [end, error] = std::from_chars(identifier.data(), identifier.data() + identifier.size(), at);
    if (error != std::errc() || end != identifier.data() + identifier.size()
        || at >= OstrelHotkey::canonical().size())
        return std::nullopt;
    return OstrelHotkey::canonical()[at];
}

} // namespace

HotkeyController::HotkeyController(Owner owner)
    : owner_(std::move(owner))
    , monitor_(owner_.center)
{
}

void HotkeyController::start()
{
    monitor_.start(owner_.panel,
        { .refused = [this](HotKeyRefusal refusal) { refusedLater(refusal); },
            .changed = [this] { standingChanged(); } });
}

void HotkeyController::applyHotkey()
{
    hotkeyError_.clear();
    if (owner_.settings.hotkeyCleared)
        return monitor_.unregister();
    const OstrelHotkey wanted = owner_.settings.hotkey;
    if (registerHotkey(wanted))
        return;
    hotkeyError_ = refusalText(wanted, monitor_.refusal());
    if (wanted == OstrelHotkey::fallback() || !registerHotkey(OstrelHotkey::fallback()))
        return;
    owner_.settings.hotkey = OstrelHotkey::fallback();
    owner_.settings.writeHotkey();
}

void HotkeyController::stop()
{
    disarmHotkeyRecorder();
    monitor_.unregister();
}

bool HotkeyController::registerHotkey(const OstrelHotkey& hotkey)
{
    toldLater_ = false;
    const bool taken = monitor_.registerHotkey(hotkey);
    unavailable_ = !taken && monitor_.refusal() == HotKeyRefusal::unavailable;
    return taken;
}

std::string HotkeyController::refusalText(const OstrelHotkey& hotkey, HotKeyRefusal refusal) const
{
    const bool held = refusal == HotKeyRefusal::held && !offscreen_;
    return HotkeyText::refusal(hotkey, refusal,
        held ? DesktopShortcuts::holder(owner_.files, monitor_.desktop(), hotkey) : std::nullopt);
}

void HotkeyController::refusedLater(HotKeyRefusal refusal)
{
    unavailable_ = refusal == HotKeyRefusal::unavailable;
    hotkeyError_ = refusalText(owner_.settings.hotkey, refusal);
    toldLater_ = true;
    owner_.body.renderBody();
}

void HotkeyController::standingChanged()
{
    unavailable_ = false;
    if (std::exchange(toldLater_, false))
        hotkeyError_.clear();
    owner_.body.renderBody();
}

void HotkeyController::recordHotkey()
{
    if (hotkeyRecording_) {
        disarmHotkeyRecorder();
        hotkeyError_.clear();
    } else {
        armHotkeyRecorder();
    }
    owner_.body.renderBody();
}

void HotkeyController::armHotkeyRecorder()
{
    if (hotkeyRecorderMonitor_)
        return;
    hotkeyRecording_ = true;
    hotkeyError_.clear();
    if (offscreen_)
        return;
    // The keys go to the panel before they are looked at there.
    owner_.takeKeys();
    hotkeyRecorderMonitor_ = owner_.events.monitorKeyDown(
        [this](const platform::KeyDown& event) { return captureHotkey(event); });
}

void HotkeyController::disarmHotkeyRecorder()
{
    hotkeyRecording_ = false;
    hotkeyRecorderMonitor_.reset();
}

bool HotkeyController::captureHotkey(const platform::KeyDown& event)
{
    if (!hotkeyRecording_)
        return false;
    if (OstrelHotkey::isCancel(event.keyCode)) {
        disarmHotkeyRecorder();
        hotkeyError_.clear();
        owner_.body.renderBody();
        return true;
    }
    if (OstrelHotkey::isClear(event.keyCode)) {
        clearHotkey();
        return true;
    }
    const auto candidate = OstrelHotkey::fromEvent(event);
    if (!candidate)
        return true;
    takeHotkey(*candidate);
    return true;
}

void HotkeyController::clearHotkey()
{
    disarmHotkeyRecorder();
    owner_.settings.hotkeyCleared = true;
    hotkeyError_.clear();
    toldLater_ = false;
    unavailable_ = false;
    if (!offscreen_) {
        monitor_.unregister();
        owner_.settings.writeHotkeyCleared();
    }
    owner_.body.renderBody();
    owner_.updateBar();
}

bool HotkeyController::conflicts(const OstrelHotkey& hotkey)
{
    const auto text = hotkey.conflict(familyHolders());
    if (text)
        hotkeyError_ = fmt::format("{}: {}", hotkey.display(), *text);
    return text.has_value();
}

bool HotkeyController::takeOrGoBack(const OstrelHotkey& hotkey)
{
    if (registerHotkey(hotkey))
        return true;
    hotkeyError_ = refusalText(hotkey, monitor_.refusal());
    if (!owner_.settings.hotkeyCleared)
        registerHotkey(owner_.settings.hotkey);
    return false;
}

void HotkeyController::storeHotkey(const OstrelHotkey& hotkey)
{
    owner_.settings.hotkey = hotkey;
    owner_.settings.hotkeyCleared = false;
    hotkeyError_.clear();
    if (!offscreen_) {
        owner_.settings.writeHotkey();
        owner_.settings.writeHotkeyCleared();
    }
}

void HotkeyController::takeHotkey(const OstrelHotkey& hotkey)
{
    const bool taken = !conflicts(hotkey) && takeOrGoBack(hotkey);
    if (taken) {
        disarmHotkeyRecorder();
        storeHotkey(hotkey);
    }
    owner_.body.renderBody();
    if (taken)
        owner_.updateBar();
}

void HotkeyController::applyPickedHotkey(const OstrelHotkey& hotkey)
{
    disarmHotkeyRecorder();
    takeHotkey(hotkey);
}

void HotkeyController::resetHotkey() { applyPickedHotkey(OstrelHotkey::fallback()); }

void HotkeyController::pickHotkey(std::string_view identifier)
{
    if (const auto hotkey = choiceOf(identifier))
        applyPickedHotkey(*hotkey);
}

FamilyHotkeys::Holders HotkeyController::familyHolders() const
{
    return FamilyHotkeys::holders(
        OstrelHotkey::owner, offscreen_ ? FamilyHotkeys::Reader() : owner_.siblings);
}

HotkeyText::Section HotkeyController::section() const
{
    return HotkeyText::section({ .hotkey = owner_.settings.hotkey,
                                   .cleared = owner_.settings.hotkeyCleared,
                                   .recording = hotkeyRecording_,
                                   .error = hotkeyError_,
                                   .standing = monitor_.standing(),
                                   .unavailable = unavailable_ },
        familyHolders());
}

} // namespace ostrel
