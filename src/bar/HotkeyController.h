// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/HotkeyMonitor.h"
#include "bar/HotkeyText.h"
#include "bar/OstrelHotkey.h"
#include "bar/Settings.h"
#include "core/PanelBody.h"
#include "core/PanelDoor.h"
#include "platform/EventMonitor.h"
#include "platform/FileManager.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace ostrel {

/// The global hotkey: its registration, and the recorder that turns a key press into a new combination.
/// Nothing that is refused reaches the store. Main thread.
class HotkeyController {
public:
    /// All of it must outlive the controller.
    struct Owner {
        Settings& settings;
        platform::HotKeyCenter& center;
        platform::EventMonitor& events;
        const platform::FileManager& files; ///< holds the desktop's settings
        PanelDoor& panel;
        PanelBody& body;
        FamilyHotkeys::Reader siblings; ///< asked anew with each use
        std::function<void()> takeKeys; ///< makes the panel the one that gets the keys
        std::function<void()> updateBar; ///< the bar's texts name the hotkey
    };

    explicit HotkeyController(Owner owner);

    /// From now on nothing is stored, nothing is listened to, and no sibling's settings are read.
    void setOffscreen() { offscreen_ = true; }

    /// Presses open and close the panel from now on. Once, before `applyHotkey`.
    void start();
    /// Registers the stored combination, or else the shipped one.
    void applyHotkey();
    /// Gives the combination back to the desktop, and hears no key any more. Stores nothing.
    void stop();

    /// The press on the field: begins to record, or gives up.
    void recordHotkey();
    /// The shipped combination.
    void resetHotkey();
    /// The press on a choice; its identifier is "hotkey-choice-" and its place. Nothing for another one.
    void pickHotkey(std::string_view identifier);
    void applyPickedHotkey(const OstrelHotkey& hotkey);

    void armHotkeyRecorder();
    void disarmHotkeyRecorder();
    /// A key while the recorder is armed; whether it was taken.
    bool captureHotkey(const platform::KeyDown& event);

    [[nodiscard]] bool hotkeyRecording() const { return hotkeyRecording_; }
    /// What is told in red; empty when there is nothing to say.
    [[nodiscard]] const std::string& hotkeyError() const { return hotkeyError_; }
    /// Who holds what beside this program, as of now.
    [[nodiscard]] FamilyHotkeys::Holders familyHolders() const;
    /// What the settings show.
    [[nodiscard]] HotkeyText::Section section() const;

private:
    void clearHotkey();
    void storeHotkey(const OstrelHotkey& hotkey);
    /// Takes the combination if rules and desktop let it; else the line says why, and the recorder stays.
    void takeHotkey(const OstrelHotkey& hotkey);
    /// Whether the combination is had now. If not, the line says why, and the one before is back.
    bool takeOrGoBack(const OstrelHotkey& hotkey);
    bool registerHotkey(const OstrelHotkey& hotkey);
    /// Whether the rules refuse the combination; the line says why.
    bool conflicts(const OstrelHotkey& hotkey);
    [[nodiscard]] std::string refusalText(const OstrelHotkey& hotkey, platform::HotKeyRefusal refusal) const;
    void refusedLater(platform::HotKeyRefusal refusal);
    void standingChanged();

    Owner owner_;
    HotkeyMonitor monitor_;
    bool offscreen_ = false;
    bool hotkeyRecording_ = false;
    std::string hotkeyError_;
    bool unavailable_ = false;
    bool toldLater_ = false; ///< the error came by itself, and goes by itself
    std::unique_ptr<platform::Observation> hotkeyRecorderMonitor_;
};

} // namespace ostrel
