// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/BarTitle.h"
#include "bar/OstrelHotkey.h"
#include "platform/UserDefaults.h"
#include "readings/NativeTick.h"

#include <string>
#include <string_view>

namespace ostrel {

/// The user's choices in memory. `loadSettings` reads them once at start; every change is written at once.
/// Main thread only.
class Settings {
public:
    static constexpr std::string_view pinKey = "dev.quent.ostrel.pinned";
    static constexpr std::string_view barModeKey = "dev.quent.ostrel.barmode";
    static constexpr std::string_view barModeMigrationKey = "ostrel.v072.bar-mode-migrated";
    static constexpr std::string_view barPartsKey = "dev.quent.ostrel.barparts";
    static constexpr std::string_view barPartsMigrationKey = "ostrel.v072.bar-parts-migrated";
    static constexpr std::string_view hotkeyKey = "dev.quent.ostrel.hotkey";
    static constexpr std::string_view hotkeyClearedKey = "dev.quent.ostrel.hotkey-cleared";

    explicit Settings(platform::UserDefaults& defaults);

    /// Reads every choice and gives the refresh profile to the tick. Runs the one-time migrations. A value of
    /// the wrong type reads as absent.
    void loadSettings(NativeTick& tick);

    /// The stored refresh profile, or "normal".
    [[nodiscard]] std::string refreshProfile() const;
    /// How texts name the hotkey; "none" when the user cleared it.
    [[nodiscard]] std::string hotkeyLabel() const;

    /// Sets and stores the pin.
    void storePinned(bool value);
    /// Set and store what the bar shows.
    void storeBarMode(BarDisplayMode mode);
    void storeBarParts(const BarParts& parts);
    /// Store the hotkey, and whether it is cleared, as they are.
    void writeHotkey();
    void writeHotkeyCleared();
    /// Flip and store.
    void flipMotion();
    void flipHints();

    bool pinned;
    BarDisplayMode barDisplayMode = BarDisplayMode::mark;
    BarParts barParts = defaultBarParts();
    OstrelHotkey hotkey = OstrelHotkey::fallback();
    bool hotkeyCleared = false;
    bool motionEnabled = true;
    bool dashboardDogEnabled = true;
    bool hintsEnabled = true;

private:
    void loadPin();
    void loadBar();
    void migrateBarMode();
    void migrateBarParts();
    void writeBarMode();
    void writeBarParts();

    platform::UserDefaults& defaults_;
};

} // namespace ostrel
