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

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using namespace platform;
using namespace std::string_literals;
namespace fs = std::filesystem;
using ostrel::json::Value;

constexpr const char* suite = "dev.quent.ostrel";
const std::string fileName = ".config/zol-mini-apps/dev.quent.ostrel.json";

/// A home with the settings of one user, one who has opened them already, and whoever else does.
struct Settings : TemporaryHome {
    [[nodiscard]] std::string file() const { return path() + "/" + fileName; }
    [[nodiscard]] LinuxUserDefaults open() { return LinuxUserDefaults(files, suite); }
    [[nodiscard]] std::optional<std::string> text(const std::string& end = {}) const
    {
        return files.read(file() + end, 10'000'000);
    }
    [[nodiscard]] Value stored() const { return ostrel::json::parse(text().value_or("")).value_or(Value()); }

    LinuxFileManager files;
    LinuxUserDefaults defaults { files, suite };
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
    EXPECT_EQ(typesOf(home.defaults, "key"), "");
    for (const auto& [json, types] : cases) {
        home.write(fileName, R"({"key":)"s + json + "}");
        EXPECT_EQ(typesOf(home.defaults, "key"), types) << json;
        EXPECT_EQ(typesOf(home.defaults, "other"), "") << json;
    }
}

TEST(LinuxUserDefaults, EveryValueComesBackAlsoAfterARestartAndAbsentStaysApartFromFalse)
{
    Settings home;
    const std::vector<std::string> list { "", "mcp", "é\n\"", "\xc3" };
    auto& defaults = home.defaults;
    defaults.setBoolean("off", false);
    defaults.setBoolean("on", true);
    defaults.setNumber("number", 0.1);
    defaults.setText("text", "a\0b\x1f\"\\é😀\xff"s);
    defaults.setTextArray("list", list);
    defaults.setTextArray("none", {});
    defaults.setBytes("bytes", "\0\x80\xff"s);
    defaults.setBytes("no bytes", "");
    defaults.setNumber("number", std::numeric_limits<double>::infinity());
    defaults.setNumber("nan", std::nan(""));
    const auto restarted = home.open();
    for (const LinuxUserDefaults* seen : { &std::as_const(defaults), &restarted }) {
        EXPECT_EQ(seen->boolean("off"), false);
        EXPECT_EQ(seen->boolean("on"), true);
        EXPECT_EQ(seen->boolean("absent"), std::nullopt);
        EXPECT_EQ(seen->number("number"), 0.1) << "what isn't finite changes nothing";
        EXPECT_EQ(seen->number("nan"), std::nullopt);
        // Bytes that aren't UTF-8 read alike before and after a restart.
        EXPECT_EQ(seen->text("text"), "a\0b\x1f\"\\é😀\xef\xbf\xbd"s);
        EXPECT_EQ(seen->textArray("list"), (std::vector<std::string> { "", "mcp", "é\n\"", "\xef\xbf\xbd" }));
        EXPECT_EQ(seen->textArray("none"), std::vector<std::string>());
        EXPECT_EQ(seen->bytes("bytes"), "\0\x80\xff"s);
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

TEST(LinuxUserDefaults, WhatOthersStoredStaysInTheFileAndEachSuiteHasItsOwn)
{
    Settings home;
    const Value foreign { { "null", nullptr }, { "nested", { { "a", { 1, 2.5, "x" } } } },
        { "large", INT64_MAX }, { "small", 5e-324 }, { "zol.app.theme", "dark" } };
    home.write(fileName, ostrel::json::dump(foreign));
    home.defaults.setBoolean("mine", true);
    Value expected = foreign;
    expected["mine"] = true;
    EXPECT_EQ(home.stored(), expected);
    LinuxUserDefaults(home.files, "zol.other").setText("mine", "theirs");
    home.defaults.remove("mine");
    EXPECT_EQ(home.stored(), foreign);
}

TEST(LinuxUserDefaults, TwoWhoWriteDoNotLoseEachOthersKeys)
{
    Settings home;
    auto& first = home.defaults;
    auto second = home.open();
    EXPECT_EQ(first.text("a"), std::nullopt);
    for (int i = 0; i < 20; ++i) {
        first.setNumber("first" + std::to_string(i), i);
        second.setNumber("second" + std::to_string(i), i);
        EXPECT_EQ(first.number("second" + std::to_string(i)), i);
    }
    second.remove("first3");
    EXPECT_EQ(first.number("first3"), std::nullopt);

    // Processes that write at the same time. Few writes: beyond a fifth of a second nobody waits for another.
    constexpr int writes = 15;
    const auto writer = [&home](const char* name) {
        return [&home, name] {
            for (int i = 0; i < writes; ++i)
                home.defaults.setNumber(name + std::to_string(i), i);
        };
    };
    ForkedProcess left(writer("left"));
    ForkedProcess right(writer("right"));
    EXPECT_EQ(left.wait() + right.wait(), 0);
    EXPECT_EQ(home.stored().size(), 39U + 2 * writes);
}

TEST(LinuxUserDefaults, AFileThatIsNoObjectCountsAsEmptyAndIsKeptBeside)
{
    const std::string texts[] { "not json", "[1]", "{\"a\":1", "{\"a\":\"\xff\"}", "{}\0"s,
        std::string(1000, '[') };
    Settings home;
    const auto aside = [&home](std::size_t copy) {
        return home.text(".corrupt" + (copy == 0 ? "" : std::to_string(copy + 1)));
    };
    std::size_t copies = 0;
    for (const std::string& text : texts) {
        home.write(fileName, text);
        EXPECT_EQ(typesOf(home.defaults, "a"), "") << text;
        EXPECT_EQ(home.text(), text) << "reading overwrites nothing";
        EXPECT_EQ(aside(copies++), text);
        // A second look at the same contents, by another process too, makes no second copy.
        EXPECT_EQ(typesOf(home.open(), "a"), "");
        home.write(fileName, text);
        EXPECT_EQ(typesOf(home.defaults, "a"), "");
        EXPECT_EQ(aside(copies), std::nullopt) << text;
        home.defaults.setBoolean("b", true);
        EXPECT_EQ(home.stored(), (Value { { "b", true } })) << text;
    }
    EXPECT_EQ(aside(0), texts[0]) << "a later one doesn't take its place";
    home.write(fileName, "");
    home.defaults.setBoolean("c", true);
    EXPECT_EQ(home.stored(), (Value { { "c", true } }));
    EXPECT_EQ(aside(copies), std::nullopt) << "an empty file is worth no copy";
}

TEST(LinuxUserDefaults, WhatCanBeNeitherReadNorKeptBesideIsNeverOverwritten)
{
    const std::string foreign(5'000'000, ' '); // more than settings ever take
    Settings home;
    home.defaults.setText("kept", "x");
    const auto holdsInMemory = [&](const char* what) {
        home.defaults.setBoolean("new", true);
        EXPECT_EQ(home.defaults.boolean("new"), true) << what;
        home.defaults.remove("new");
        EXPECT_EQ(home.defaults.boolean("new"), std::nullopt) << what;
    };
    home.write(fileName, foreign);
    holdsInMemory("too large");
    EXPECT_TRUE(home.text() == foreign);

    // No place beside it is left.
    for (int copy = 1; copy <= 9; ++copy)
        fs::create_directory(home.file() + ".corrupt" + (copy == 1 ? "" : std::to_string(copy)));
    home.write(fileName, "not json");
    holdsInMemory("no room beside");
    EXPECT_EQ(home.text(), "not json");

    fs::remove(home.file());
    fs::create_directory(home.file());
    holdsInMemory("a folder");
    EXPECT_TRUE(fs::is_directory(home.file()));
    fs::remove(home.file());
    ::mkfifo(home.file().c_str(), 0600);
    holdsInMemory("a pipe");
    EXPECT_TRUE(fs::is_fifo(home.file()));
}

TEST(LinuxUserDefaults, WhatCannotBeReadOrWrittenForAWhileHoldsInMemoryAndLaterJoinsTheOthers)
{
    Settings home;
    ForkedProcess process([&home] {
        becomeOrdinaryUser(home.path());
        auto& defaults = home.defaults;
        defaults.setText("early", "e");
        defaults.setText("gone", "g");
        ::chmod(home.file().c_str(), 0);
        auto later = home.open();
        EXPECT_EQ(later.text("early"), std::nullopt);
        later.setText("unread", "u");
        EXPECT_EQ(later.text("unread"), "u");
        ::chmod(home.file().c_str(), 0600);
        EXPECT_EQ(later.text("early"), "e") << "it is looked at again";

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
        later.setText("other", "o");
        EXPECT_EQ(defaults.text("other"), "o");
        EXPECT_EQ(defaults.text("held"), "h") << "still ahead of the file";
        defaults.setText("late", "l");
        EXPECT_EQ(home.stored(),
            (Value {
                { "early", "e" }, { "unread", "u" }, { "held", "h" }, { "late", "l" }, { "other", "o" } }));
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
    for (LinuxUserDefaults* defaults : { &homeless, &home.defaults }) {
        defaults->setText("a", "x");
        defaults->setBoolean("b", false);
        defaults->remove("a");
        EXPECT_EQ(defaults->text("a"), std::nullopt);
        EXPECT_EQ(defaults->boolean("b"), false);
    }
    EXPECT_EQ(nowhere.writes, 0);
    EXPECT_EQ(entriesIn(home.path()), 1);
}

TEST(LinuxUserDefaultsSuites, AnotherProgramsSettingsAreFollowedAndNothingIsEverWritten)
{
    Settings home;
    const LinuxUserDefaultsSuites suites(home.files);
    const auto another = suites.open("org.zolwerk.sillon");
    const std::string folder = home.path() + "/.config/zol-mini-apps";
    EXPECT_EQ(another->text("key"), std::nullopt);
    EXPECT_FALSE(fs::exists(folder));

    fs::create_directories(folder);
    const std::string file = folder + "/org.zolwerk.sillon.json", elsewhere = home.path() + "/elsewhere";
    const auto clear = [&] { fs::remove(file); };
    home.files.replace(file, R"({"key":"first"})");
    EXPECT_EQ(another->text("key"), "first");
    home.files.replace(file, R"({"key":"second!"})");
    EXPECT_EQ(another->text("key"), "second!");
    for (const auto& [text, what] :
        { std::pair { "{\"key\""s, "cut" }, { "[]"s, "no object" }, { ""s, "empty" },
            { "{\"key\":\"" + std::string(300'000, 'x') + "\"}", "huge" }, { "\xff\xfe"s, "no text" } }) {
        home.files.replace(file, text);
        EXPECT_EQ(another->text("key"), std::nullopt) << what;
    }
    clear();
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(another->text("key"), std::nullopt) << "a pipe that nobody writes to";
    clear();
    fs::create_symlink("/dev/zero", file);
    EXPECT_EQ(another->text("key"), std::nullopt) << "a device";
    clear();
    fs::create_symlink(file, file);
    EXPECT_EQ(another->text("key"), std::nullopt) << "a link to itself";
    clear();
    home.files.replace(elsewhere, R"({"key":"linked"})");
    fs::create_symlink(elsewhere, file);
    EXPECT_EQ(another->text("key"), "linked");
    EXPECT_EQ(entriesIn(folder), 1) << "neither a lock nor a copy of what was broken";
}

} // namespace
