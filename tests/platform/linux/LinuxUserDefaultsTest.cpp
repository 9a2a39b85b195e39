// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxUserDefaults.h"

#include "core/Json.h"
#include "platform/linux/LinuxFileManager.h"
#include "support/FakeFileManager.h"
#include "support/ForkedProcess.h"
#include "support/TemporaryHome.h"
#include "support/Waiting.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using namespace platform;
using namespace std::string_literals;
namespace fs = std::filesystem;
using ostrel::json::Value;

constexpr std::size_t plenty = 10'000'000;
constexpr const char* suite = "dev.quent.ostrel";
const std::string fileName = ".config/zol-mini-apps/dev.quent.ostrel.json";

/// A home with the settings of one user, and whoever opens them.
struct Settings : TemporaryHome {
    [[nodiscard]] std::string file() const { return path() + "/" + fileName; }
    [[nodiscard]] LinuxUserDefaults open() { return LinuxUserDefaults(files, suite); }
    [[nodiscard]] Value stored() const
    {
        return ostrel::json::parse(files.read(file(), plenty).value_or("")).value_or(Value());
    }

    LinuxFileManager files;
};

/// What is held under a key, by the type that reads it.
std::string typesOf(const UserDefaults& defaults, std::string_view key)
{
    std::string types;
    for (const auto& [there, letter] : { std::pair { defaults.boolean(key).has_value(), 'o' },
             { defaults.number(key).has_value(), 'n' }, { defaults.text(key).has_value(), 't' },
             { defaults.textArray(key).has_value(), 'a' }, { defaults.bytes(key).has_value(), 'y' } })
        if (there)
            types += letter;
    return types;
}

TEST(LinuxUserDefaults, AValueOfAnotherTypeReadsAsAbsent)
{
    const std::pair<const char*, const char*> cases[] { { "true", "o" }, { "false", "o" }, { "0", "n" },
        { "1", "n" }, { "-2.5", "n" }, { "1e300", "n" }, { R"("")", "t" }, { R"("true")", "t" },
        { "[]", "a" }, { R"(["a","b"])", "a" }, { R"(["a",1])", "" }, { "[null]", "" }, { "null", "" },
        { "{}", "" }, { R"({"$bytes":"AP8="})", "y" }, { R"({"$bytes":""})", "y" },
        { R"({"$bytes":"x"})", "" }, { R"({"$bytes":7})", "" }, { R"(["$bytes","AP8="])", "a" } };
    Settings home;
    auto defaults = home.open();
    EXPECT_EQ(typesOf(defaults, "key"), "");
    for (const auto& [json, types] : cases) {
        home.write(fileName, R"({"key":)"s + json + "}");
        EXPECT_EQ(typesOf(defaults, "key"), types) << json;
        EXPECT_EQ(typesOf(defaults, "other"), "") << json;
    }
}

TEST(LinuxUserDefaults, EveryValueComesBackAlsoAfterARestartAndAbsentStaysApartFromFalse)
{
    Settings home;
    const std::string everyByte = [] {
        std::string bytes;
        for (int byte = 0; byte < 256; ++byte)
            bytes += static_cast<char>(byte);
        return bytes;
    }();
    const std::vector<std::string> list { "", "mcp", "é\n\"" };
    auto defaults = home.open();
    defaults.setBoolean("off", false);
    defaults.setBoolean("on", true);
    defaults.setNumber("number", 0.1);
    defaults.setText("text", "a\0b\x1f\"\\é😀"s);
    defaults.setTextArray("list", list);
    defaults.setTextArray("none", {});
    defaults.setBytes("bytes", everyByte);
    defaults.setBytes("no bytes", "");
    defaults.setNumber("number", std::numeric_limits<double>::infinity());
    defaults.setNumber("nan", std::nan(""));
    const auto restarted = home.open();
    for (const UserDefaults* seen :
        { static_cast<const UserDefaults*>(&defaults), static_cast<const UserDefaults*>(&restarted) }) {
        EXPECT_EQ(seen->boolean("off"), false);
        EXPECT_EQ(seen->boolean("on"), true);
        EXPECT_EQ(seen->boolean("absent"), std::nullopt);
        EXPECT_EQ(seen->number("number"), 0.1) << "what isn't finite changes nothing";
        EXPECT_EQ(seen->number("nan"), std::nullopt);
        EXPECT_EQ(seen->text("text"), "a\0b\x1f\"\\é😀"s);
        EXPECT_EQ(seen->textArray("list"), list);
        EXPECT_EQ(seen->textArray("none"), std::vector<std::string>());
        EXPECT_EQ(seen->bytes("bytes"), everyByte);
        EXPECT_EQ(seen->bytes("no bytes"), "");
    }
    defaults.remove("off");
    defaults.remove("never there");
    defaults.setText("on", "another type");
    EXPECT_EQ(restarted.boolean("off"), std::nullopt);
    EXPECT_EQ(typesOf(restarted, "on"), "t");
    EXPECT_EQ(fs::status(home.file()).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(fs::path(home.file()).parent_path()).permissions(), fs::perms(0700));
}

TEST(LinuxUserDefaults, TextThatIsNotUtf8IsReplacedAndReadsAlikeBeforeAndAfterARestart)
{
    Settings home;
    auto defaults = home.open();
    defaults.setText("good", "stays");
    defaults.setText("text",
        "a\xff"
        "b");
    defaults.setTextArray("list", { "\xc3", "ok" });
    const auto restarted = home.open();
    for (const UserDefaults* seen :
        { static_cast<const UserDefaults*>(&defaults), static_cast<const UserDefaults*>(&restarted) }) {
        EXPECT_EQ(seen->text("text"),
            "a\xef\xbf\xbd"
            "b");
        EXPECT_EQ(seen->textArray("list"), (std::vector<std::string> { "\xef\xbf\xbd", "ok" }));
        EXPECT_EQ(seen->text("good"), "stays");
    }
}

TEST(LinuxUserDefaults, WhatOthersStoredStaysInTheFile)
{
    Settings home;
    const Value foreign { { "null", nullptr }, { "nested", { { "a", { 1, 2.5, "x" } } } },
        { "large", INT64_MAX }, { "small", 5e-324 }, { "zol.app.theme", "dark" } };
    home.write(fileName, ostrel::json::dump(foreign));
    home.open().setBoolean("mine", true);
    Value expected = foreign;
    expected["mine"] = true;
    EXPECT_EQ(home.stored(), expected);
    home.open().remove("mine");
    EXPECT_EQ(home.stored(), foreign);
}

TEST(LinuxUserDefaults, TwoWhoWriteDoNotLoseEachOthersKeys)
{
    Settings home;
    auto first = home.open();
    auto second = home.open();
    EXPECT_EQ(first.text("a"), std::nullopt);
    for (int i = 0; i < 20; ++i) {
        first.setNumber("first" + std::to_string(i), i);
        second.setNumber("second" + std::to_string(i), i);
        EXPECT_EQ(first.number("second" + std::to_string(i)), i);
    }
    second.remove("first3");
    first.setText("a", "x");
    EXPECT_EQ(home.stored().size(), 40U);
    EXPECT_EQ(first.number("first3"), std::nullopt);

    // Processes that write at the same time. Few writes: beyond a fifth of a second nobody waits for another.
    constexpr int writes = 15;
    const auto writer = [&home](const char* name) {
        return [&home, name] {
            auto own = home.open();
            for (int i = 0; i < writes; ++i)
                own.setNumber(name + std::to_string(i), i);
        };
    };
    ForkedProcess left(writer("left"));
    ForkedProcess right(writer("right"));
    EXPECT_EQ(left.wait() + right.wait(), 0);
    EXPECT_EQ(home.stored().size(), 40U + 2 * writes);
}

TEST(LinuxUserDefaults, AFileThatIsNoObjectCountsAsEmptyAndIsKeptBeside)
{
    const std::string texts[] { "not json", "[1]", "{\"a\":1", "{\"a\":\"\xff\"}", "7", "{}\0"s,
        std::string(1000, '[') };
    Settings home;
    auto defaults = home.open();
    const auto aside = [&home](std::size_t copy) {
        return home.files.read(
            home.file() + ".corrupt" + (copy == 0 ? "" : std::to_string(copy + 1)), plenty);
    };
    std::size_t copies = 0;
    for (const std::string& text : texts) {
        home.write(fileName, text);
        EXPECT_EQ(typesOf(defaults, "a"), "") << text;
        EXPECT_EQ(home.files.read(home.file(), plenty), text) << "reading overwrites nothing";
        EXPECT_EQ(aside(copies++), text);
        // A second look at the same contents, by another process too, makes no second copy.
        EXPECT_EQ(typesOf(home.open(), "a"), "");
        home.write(fileName, text);
        EXPECT_EQ(typesOf(defaults, "a"), "");
        EXPECT_EQ(aside(copies), std::nullopt) << text;
        defaults.setBoolean("b", true);
        EXPECT_EQ(home.stored(), (Value { { "b", true } })) << text;
    }
    EXPECT_EQ(aside(0), texts[0]) << "a later one doesn't take its place";
    home.write(fileName, "");
    defaults.setBoolean("c", true);
    EXPECT_EQ(home.stored(), (Value { { "c", true } }));
    EXPECT_EQ(aside(copies), std::nullopt) << "an empty file is worth no copy";
}

TEST(LinuxUserDefaults, WhatCanBeNeitherReadNorKeptBesideIsNeverOverwritten)
{
    const std::string foreign(5'000'000, ' '); // more than settings ever take
    Settings home;
    auto defaults = home.open();
    defaults.setText("kept", "x");
    const auto holdsInMemory = [&](const char* what) {
        defaults.setBoolean("new", true);
        EXPECT_EQ(defaults.boolean("new"), true) << what;
        defaults.remove("new");
        EXPECT_EQ(defaults.boolean("new"), std::nullopt) << what;
    };
    home.write(fileName, foreign);
    holdsInMemory("too large");
    EXPECT_EQ(home.files.read(home.file(), plenty), foreign);

    // No place beside it is left.
    for (int copy = 1; copy <= 9; ++copy)
        fs::create_directory(home.file() + ".corrupt" + (copy == 1 ? "" : std::to_string(copy)));
    home.write(fileName, "not json");
    holdsInMemory("no room beside");
    EXPECT_EQ(home.files.read(home.file(), plenty), "not json");

    fs::remove(home.file());
    fs::create_directory(home.file());
    holdsInMemory("a folder");
    EXPECT_TRUE(fs::is_directory(home.file()));

    fs::remove(home.file());
    ::mkfifo(home.file().c_str(), 0600);
    holdsInMemory("a pipe");
    EXPECT_TRUE(fs::is_fifo(home.file()));
}

TEST(LinuxUserDefaults, AFileThatCouldNotBeReadForAWhileLosesNothing)
{
    Settings home;
    ForkedProcess process([&home] {
        becomeOrdinaryUser(home.path());
        home.open().setText("old", "x");
        auto later = home.open();
        ::chmod(home.file().c_str(), 0);
        EXPECT_EQ(later.text("old"), std::nullopt);
        later.setText("new", "y");
        EXPECT_EQ(later.text("new"), "y");
        ::chmod(home.file().c_str(), 0600);
        EXPECT_EQ(later.text("old"), "x") << "it is looked at again";
        later.setText("newer", "z");
        const auto restarted = home.open();
        for (const auto& [key, value] : { std::pair { "old", "x" }, { "new", "y" }, { "newer", "z" } })
            EXPECT_EQ(restarted.text(key), value) << key;
    });
    EXPECT_EQ(process.wait(), 0);
}

TEST(LinuxUserDefaults, OnADiskThatTakesNoWritesTheValuesHoldInMemoryAndLaterJoinTheOthers)
{
    Settings home;
    ForkedProcess process([&home] {
        becomeOrdinaryUser(home.path());
        auto defaults = home.open();
        defaults.setText("early", "e");
        defaults.setText("gone", "g");
        const std::string folder = fs::path(home.file()).parent_path();
        ::chmod(folder.c_str(), 0500);
        defaults.setText("held", "h");
        defaults.remove("gone");
        EXPECT_EQ(defaults.text("held"), "h");
        EXPECT_EQ(defaults.text("early"), "e");
        EXPECT_EQ(defaults.text("gone"), std::nullopt);
        EXPECT_EQ(home.stored().size(), 2U);
        ::chmod(folder.c_str(), 0700);
        // Meanwhile another process could write again.
        home.open().setText("other", "o");
        EXPECT_EQ(defaults.text("other"), "o");
        EXPECT_EQ(defaults.text("held"), "h") << "still ahead of the file";
        defaults.setText("late", "l");
        EXPECT_EQ(
            home.stored(), (Value { { "early", "e" }, { "held", "h" }, { "late", "l" }, { "other", "o" } }));
    });
    EXPECT_EQ(process.wait(), 0);
}

TEST(LinuxUserDefaults, WithoutAHomeOrAFolderTheValuesHoldForTheRun)
{
    FakeFileManager nowhere;
    nowhere.home = "";
    LinuxUserDefaults homeless(nowhere, suite);
    Settings home;
    home.write(".config", "a file in the folder's place");
    auto blocked = home.open();
    for (UserDefaults* defaults :
        { static_cast<UserDefaults*>(&homeless), static_cast<UserDefaults*>(&blocked) }) {
        defaults->setText("a", "x");
        defaults->setBoolean("b", false);
        defaults->remove("a");
        EXPECT_EQ(defaults->text("a"), std::nullopt);
        EXPECT_EQ(defaults->boolean("b"), false);
    }
    EXPECT_EQ(nowhere.writes, 0);
    EXPECT_EQ(entriesIn(home.path()), 1);
}

TEST(LinuxUserDefaults, EachSuiteHasItsOwnFile)
{
    Settings home;
    LinuxUserDefaults other(home.files, "zol.other");
    other.setText("key", "theirs");
    auto mine = home.open();
    mine.setText("key", "mine");
    EXPECT_EQ(other.text("key"), "theirs");
    EXPECT_EQ(mine.text("key"), "mine");
}

} // namespace
