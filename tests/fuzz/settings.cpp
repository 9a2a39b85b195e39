// SPDX-License-Identifier: Apache-2.0
/// A settings file of this program's with any bytes: what is no choice of ours stays in it, and what can't be
/// read is set aside whole. The same bytes as the files of the sibling apps are read and left alone.
#include "bar/Settings.h"
#include "bar/FamilyReaders.h"
#include "core/Json.h"
#include "design/ZOLPinPolicy.h"
#include "hints/CompanionPolicy.h"
#include "hints/HintController.h"
#include "janitor/ProtectionList.h"
#include "platform/linux/LinuxFileManager.h"
#include "platform/linux/LinuxUserDefaults.h"
#include "readings/CPUSampler.h"

#include "fuzz/FuzzTarget.h"
#include "support/FakeKernel.h"
#include "support/TemporaryFolder.h"
#include "support/VirtualTime.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>

namespace {

using namespace ostrel;

constexpr std::string_view ownSuite = "dev.quent.ostrel.own";
constexpr std::array<std::string_view, 5> familyFiles { ".config/zol-mini-apps/dev.quent.ostrel.json",
    ".config/zol-mini-apps/dev.quent.haldrin.json", ".config/zol-mini-apps/org.zolwerk.ruvane.bar.json",
    ".config/zol-mini-apps/org.zolwerk.sillon.json", ".config/pellam-dial/config.json" };
/// A file beyond it isn't read.
constexpr std::size_t longestFile = std::size_t { 64 } * 1024;

/// The machine's files in a home of their own, without waiting for the disk.
class QuickFiles final : public platform::FileManager {
public:
    [[nodiscard]] std::string homeDirectory() const override { return home.path(); }
    [[nodiscard]] bool fileExists(const std::string& path) const override { return files.fileExists(path); }
    [[nodiscard]] std::optional<std::string> read(const std::string& path, std::size_t limit) const override
    {
        return files.read(path, limit);
    }
    bool createDirectories(const std::string& path) override { return files.createDirectories(path); }
    bool replace(const std::string& path, std::string_view contents) override
    {
        return static_cast<bool>(std::ofstream(path, std::ios::binary | std::ios::trunc) << contents);
    }
    bool appendLine(const std::string& path, std::string_view line) override
    {
        return files.appendLine(path, line);
    }

    TemporaryFolder home;
    platform::LinuxFileManager files;
};

/// What the start of the program reads of its settings; twice gives the same.
void load(platform::UserDefaults& defaults)
{
    FakeKernel kernel;
    VirtualTime time;
    CPUSampler sampler { kernel };
    NativeTick tick { kernel, sampler, time, time, defaults };
    Settings settings { defaults };
    settings.loadSettings(tick);
    Settings again { defaults };
    again.loadSettings(tick);
    check(again.pinned == settings.pinned && again.barParts == settings.barParts
        && again.barDisplayMode == settings.barDisplayMode && again.hotkey == settings.hotkey);
    check(!settings.barParts.empty() && !settings.hotkeyLabel().empty());
    (void)CompanionPolicy::decoded(defaults.bytes(HintController::policyKey).value_or(""));
    ProtectionList protection { defaults };
    for (const std::string_view name : ProtectionList::locked)
        check(protection.isProtected(name, ""));
}

bool isOurs(const std::string& key)
{
    static const std::set<std::string_view> written { Settings::pinKey, Settings::barModeKey,
        Settings::barPartsKey, Settings::barModeMigrationKey, Settings::barPartsMigrationKey,
        ZOLPinPolicy::migrationKey };
    return written.contains(key);
}

void loadOwn(QuickFiles& files, const std::string& text)
{
    const std::string name = ".config/zol-mini-apps/" + std::string(ownSuite) + ".json";
    const std::string path = files.home.path() + "/" + name;
    const std::string aside = path + ".corrupt";
    std::filesystem::remove(aside);
    files.home.write(name, text);
    platform::LinuxUserDefaults defaults { files, std::string(ownSuite) };
    load(defaults);
    defaults.setText("fuzz", "written");
    const auto after = json::parseObject(files.read(path, 2 * longestFile).value_or(""));
    check(after && json::text(*after, "fuzz") == "written");
    const auto before = json::parseObject(text);
    if (before) {
        for (const auto& [key, value] : before->items())
            check(key == "fuzz" || isOurs(key) || (after->contains(key) && after->at(key) == value));
    } else if (!text.empty()) {
        check(files.read(aside, 2 * longestFile) == text);
    }
}

void loadFamily(QuickFiles& files, const std::string& text)
{
    for (const std::string_view name : familyFiles)
        files.home.write(std::string(name), text);
    const platform::LinuxUserDefaultsSuites suites { files };
    const auto reader = FamilyHotkeys::diskReader(suites, files);
    const auto held = FamilyHotkeys::holders(FamilyHotkeys::sillon, reader);
    check(held.size() + 1 == FamilyHotkeys::familyDefaults().size());
    (void)OstrelHotkey::fallback().conflict(held);
    for (const std::string_view name : familyFiles)
        check(files.read(files.home.path() + "/" + std::string(name), longestFile) == text);
}

} // namespace

void runOn(std::string_view bytes)
{
    static QuickFiles files;
    const std::string text(bytes.substr(0, longestFile));
    loadOwn(files, text);
    loadFamily(files, text);
}
