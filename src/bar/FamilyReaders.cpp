// SPDX-License-Identifier: Apache-2.0
#include "bar/FamilyReaders.h"

#include "bar/OstrelHotkey.h"
#include "core/Json.h"

#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <utility>

namespace ostrel::FamilyHotkeys {

namespace {

using Answer = std::optional<Combos>;
using Suite = std::shared_ptr<const platform::UserDefaults>;

constexpr std::string_view clearedEnd = "-cleared";
constexpr std::string_view pellamDialFile = "/.config/pellam-dial/config.json";
constexpr std::size_t longestFile = std::size_t { 64 } * 1024;

bool cleared(const platform::UserDefaults& suite, const std::string& key)
{
    return suite.boolean(key + std::string(clearedEnd)).value_or(false);
}

/// A number of the file; nothing beyond 32 bits.
std::optional<std::uint32_t> figure(const json::Value& object, std::string_view key)
{
    const json::Value* const member = json::member(object, key);
    const auto value = member ? json::asTruncated(*member) : std::nullopt;
    if (!value || *value < 0 || *value > std::numeric_limits<std::uint32_t>::max())
        return std::nullopt;
    return static_cast<std::uint32_t>(*value);
}

/// This program's own: any key name will do, even none.
Answer liveOstrel(const Suite& suite)
{
    const std::string key = "dev.quent.ostrel.hotkey";
    if (!suite)
        return std::nullopt;
    if (cleared(*suite, key))
        return Combos {};
    const auto stored = suite->text(key);
    const auto hotkey = stored ? OstrelHotkey::fromStorage(*stored + " ") : std::nullopt;
    return hotkey ? Answer({ hotkey->familyCombo() }) : std::nullopt;
}

Answer livePellamDial(const platform::FileManager& files)
{
    const auto text = files.read(files.homeDirectory() + std::string(pellamDialFile), longestFile);
    const auto config = text ? json::parseObject(*text) : std::nullopt;
    if (!config)
        return std::nullopt;
    if (json::boolean(*config, "hotKeyCleared").value_or(false))
        return Combos {};
    const json::Value* const stored = json::object(*config, "hotKey");
    const auto keyCode = stored ? figure(*stored, "keyCode") : std::nullopt;
    const auto modifiers = stored ? figure(*stored, "modifiers") : std::nullopt;
    if (!keyCode || !modifiers)
        return std::nullopt;
    return Combos { { *keyCode, *modifiers } };
}

Answer liveTessitLoop(const Suite& suite)
{
    const auto word = suite ? suite->text("globalHotkey") : std::nullopt;
    return word ? tessitCombos(*word) : std::nullopt;
}

/// Of those that store a hotkey as this program does.
Answer liveStored(const Suite& suite, const std::string& key)
{
    if (!suite)
        return std::nullopt;
    if (cleared(*suite, key))
        return Combos {};
    const auto hotkey = OstrelHotkey::fromStorage(suite->text(key).value_or(""));
    return hotkey ? Answer({ hotkey->familyCombo() }) : std::nullopt;
}

} // namespace

Reader diskReader(const platform::UserDefaultsSuites& suites, const platform::FileManager& files)
{
    const auto open = [&suites](const char* name) { return Suite(suites.open(name)); };
    return { .ostrel = [suite = open("dev.quent.ostrel")] { return liveOstrel(suite); },
        .pellamDial = [&files] { return livePellamDial(files); },
        .tessitLoop = [suite = open("dev.quent.haldrin")] { return liveTessitLoop(suite); },
        .ruvane
        = [suite = open(
               "org.zolwerk.ruvane.bar")] { return liveStored(suite, "org.zolwerk.ruvane.bar.hotkey"); },
        .sillon
        = [suite = open("org.zolwerk.sillon")] { return liveStored(suite, "org.zolwerk.sillon.hotkey"); } };
}

} // namespace ostrel::FamilyHotkeys
