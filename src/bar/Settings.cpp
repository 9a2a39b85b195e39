// SPDX-License-Identifier: Apache-2.0
#include "bar/Settings.h"

#include "design/ZOLPinPolicy.h"

#include <vector>

namespace ostrel {

namespace {

constexpr std::string_view motionKey = "ostrel.motion";
constexpr std::string_view dashboardDogKey = "ostrel.dashboardDog";
constexpr std::string_view hintsKey = "ostrel.hints";

} // namespace

Settings::Settings(platform::UserDefaults& defaults)
    : pinned(ZOLPinPolicy::pinDefault)
    , defaults_(defaults)
{
}

void Settings::loadSettings(NativeTick& tick)
{
    loadPin();
    tick.applyRefresh(refreshProfile());
    loadBar();
    migrateBarMode();
    migrateBarParts();
    if (const auto stored = OstrelHotkey::fromStorage(defaults_.text(hotkeyKey).value_or("")))
        hotkey = *stored;
    hotkeyCleared = defaults_.boolean(hotkeyClearedKey).value_or(false);
    motionEnabled = defaults_.boolean(motionKey).value_or(true);
    dashboardDogEnabled = defaults_.boolean(dashboardDogKey).value_or(true);
    hintsEnabled = defaults_.boolean(hintsKey).value_or(true);
}

void Settings::loadPin()
{
    const auto resolution = ZOLPinPolicy::resolve(
        defaults_.boolean(pinKey), defaults_.boolean(ZOLPinPolicy::migrationKey).value_or(false));
    pinned = resolution.pinned;
    if (resolution.writePinned)
        defaults_.setBoolean(pinKey, pinned);
    if (resolution.markMigrated)
        defaults_.setBoolean(ZOLPinPolicy::migrationKey, true);
}

void Settings::loadBar()
{
    if (const auto stored = ostrel::barDisplayMode(defaults_.text(barModeKey).value_or("")))
        barDisplayMode = *stored;
    const auto stored = defaults_.textArray(barPartsKey);
    if (!stored || stored->empty())
        return;
    barParts.clear();
    for (const std::string& word : *stored)
        if (barPart(word))
            barParts.insert(word);
    if (barParts.empty())
        barParts = defaultBarParts();
}

void Settings::migrateBarMode()
{
    if (defaults_.boolean(barModeMigrationKey).value_or(false))
        return;
    // The words of earlier versions all showed a value beside the mark.
    const auto stored = defaults_.text(barModeKey);
    if (stored && !ostrel::barDisplayMode(*stored))
        barDisplayMode = BarDisplayMode::markValue;
    writeBarMode();
    writeBarParts();
    defaults_.setBoolean(barModeMigrationKey, true);
}

void Settings::migrateBarParts()
{
    if (defaults_.boolean(barPartsMigrationKey).value_or(false))
        return;
    barParts = defaultBarParts();
    writeBarParts();
    defaults_.setBoolean(barPartsMigrationKey, true);
}

std::string Settings::refreshProfile() const
{
    return defaults_.text(NativeTick::refreshKey).value_or("normal");
}

std::string Settings::hotkeyLabel() const { return hotkeyCleared ? "none" : hotkey.display(); }

void Settings::storePinned(bool value)
{
    pinned = value;
    defaults_.setBoolean(pinKey, value);
}

void Settings::storeBarMode(BarDisplayMode mode)
{
    barDisplayMode = mode;
    writeBarMode();
}

void Settings::storeBarParts(const BarParts& parts)
{
    barParts = parts;
    writeBarParts();
}

void Settings::writeHotkey() { defaults_.setText(hotkeyKey, hotkey.storage()); }

void Settings::writeHotkeyCleared() { defaults_.setBoolean(hotkeyClearedKey, hotkeyCleared); }

void Settings::flipMotion()
{
    motionEnabled = !motionEnabled;
    defaults_.setBoolean(motionKey, motionEnabled);
}

void Settings::flipHints()
{
    hintsEnabled = !hintsEnabled;
    defaults_.setBoolean(hintsKey, hintsEnabled);
}

void Settings::writeBarMode() { defaults_.setText(barModeKey, rawValue(barDisplayMode)); }

void Settings::writeBarParts()
{
    defaults_.setTextArray(barPartsKey, std::vector<std::string>(barParts.begin(), barParts.end()));
}

} // namespace ostrel
