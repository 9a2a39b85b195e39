// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxFileManager.h"

#include "support/ForkedProcess.h"
#include "support/TemporaryFolder.h"
#include "support/TemporaryHome.h"
#include "support/Waiting.h"

#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace platform;
namespace fs = std::filesystem;

constexpr std::size_t plenty = 1'000'000;

/// A folder with one of each kind of thing that can stand at a path.
struct Kinds : TemporaryFolder {
    Kinds()
    {
        write("file", "contents");
        write("behind", "contents");
        write("empty", "");
        fs::create_directory(at("folder"));
        ::mkfifo(at("pipe").c_str(), 0600);
        for (const auto& [link, target] :
            { std::pair { "link", "behind" }, { "chain", "link" }, { "tofolder", "folder" },
                { "topipe", "pipe" }, { "dangling", "absent" }, { "loop", "loop" } })
            fs::create_symlink(target, at(link));
    }
    [[nodiscard]] std::string at(const std::string& name) const { return path() + "/" + name; }
};

TEST(LinuxFileManager, ReadsWholeRegularFilesUpToTheLimitAndNeverWaits)
{
    const Kinds kinds;
    struct Case {
        const char* name;
        std::size_t limit;
        std::optional<std::string> contents;
        bool exists;
    };
    const Case cases[] {
        { "file", plenty, "contents", true },
        { "file", 8, "contents", true },
        { "file", 7, {}, true },
        { "file", 0, {}, true },
        { "empty", 0, "", true },
        { "chain", plenty, "contents", true },
        { "folder", plenty, {}, false },
        { "tofolder", plenty, {}, false },
        { "pipe", plenty, {}, true },
        { "dangling", plenty, {}, false },
        { "loop", plenty, {}, false },
        { "absent", plenty, {}, false },
        { "file/x", plenty, {}, false },
        { "../../../../dev/zero", plenty, {}, true },
        { "", plenty, {}, false },
    };
    const LinuxFileManager files;
    for (const Case& c : cases) {
        EXPECT_EQ(files.read(kinds.at(c.name), c.limit), c.contents) << c.name;
        EXPECT_EQ(files.fileExists(kinds.at(c.name)), c.exists) << c.name;
    }
    EXPECT_EQ(files.read("", plenty), std::nullopt);
}

TEST(LinuxFileManager, AReplacementStandsThereWholeForThisUserOnlyWhateverStoodThere)
{
    struct Case {
        const char* name;
        bool replaced;
        bool staysLink;
    };
    const Case cases[] { { "file", true, false }, { "empty", true, false }, { "absent", true, false },
        { "pipe", true, false }, { "link", true, true }, { "chain", true, true }, { "dangling", true, false },
        { "loop", true, false }, { "tofolder", true, false }, { "topipe", true, false },
        { "folder", false, false }, { "folder/absent/x", false, false }, { "file/x", false, false } };
    const std::string text(300'000, 'n');
    for (const Case& c : cases) {
        const Kinds kinds;
        const std::string path = kinds.at(c.name);
        ::chmod(kinds.at("file").c_str(), 0644);
        const auto before = entriesIn(kinds.path());
        const bool stood = fs::symlink_status(path).type() != fs::file_type::not_found;
        LinuxFileManager files;
        EXPECT_EQ(files.replace(path, text), c.replaced) << c.name;
        EXPECT_EQ(fs::is_symlink(path), c.staysLink) << c.name;
        EXPECT_EQ(entriesIn(kinds.path()), before + (c.replaced && !stood ? 1 : 0)) << c.name;
        EXPECT_EQ(files.read(kinds.at("behind"), plenty), c.staysLink ? text : "contents") << c.name;
        EXPECT_FALSE(fs::exists(kinds.at("absent")) && c.name != std::string("absent")) << c.name;
        if (!c.replaced)
            continue;
        EXPECT_EQ(files.read(path, plenty), text) << c.name;
        EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600)) << c.name;
        EXPECT_TRUE(files.replace(path, "")) << c.name;
        EXPECT_EQ(files.read(path, plenty), "") << c.name;
    }
}

TEST(LinuxFileManager, FoldersAreMadeWithTheirParentsForThisUserOnly)
{
    const Kinds kinds;
    LinuxFileManager files;
    for (const auto& [name, made] : { std::pair { "a/b/c", true }, { "a/b/c", true }, { "d/e/", true },
             { "f//g", true }, { "folder", true }, { "tofolder/h", true }, { "file", false },
             { "file/x", false }, { "dangling/x", false } })
        EXPECT_EQ(files.createDirectories(kinds.at(name)), made) << name;
    for (const char* name : { "a", "a/b", "a/b/c", "folder/h" })
        EXPECT_EQ(fs::status(kinds.at(name)).permissions(), fs::perms(0700)) << name;
    EXPECT_FALSE(files.createDirectories(""));
    EXPECT_TRUE(files.createDirectories("/"));
}

TEST(LinuxFileManager, AFullDiskLeavesTheOldFileAndNothingBesides)
{
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/f";
    ForkedProcess process([&] {
        LinuxFileManager files;
        EXPECT_TRUE(files.replace(path, "old"));
        std::signal(SIGXFSZ, SIG_IGN);
        for (const rlim_t room : { 0, 1, 4096, 99'999 }) {
            const rlimit limit { room, RLIM_INFINITY };
            ::setrlimit(RLIMIT_FSIZE, &limit);
            EXPECT_FALSE(files.replace(path, std::string(100'000, 'n'))) << room;
            EXPECT_EQ(files.read(path, plenty), "old") << room;
            EXPECT_EQ(entriesIn(folder.path()), 1) << room;
        }
        const rlimit enough { 100'000, RLIM_INFINITY };
        ::setrlimit(RLIMIT_FSIZE, &enough);
        EXPECT_TRUE(files.replace(path, std::string(100'000, 'n')));
    });
    EXPECT_EQ(process.wait(), 0);
}

TEST(LinuxFileManager, WhatMayNotBeWrittenOrReadIsAnAnswerAndChangesNothing)
{
    const TemporaryFolder folder;
    ForkedProcess process([&folder] {
        becomeOrdinaryUser(folder.path());
        const std::string path = folder.path() + "/f";
        LinuxFileManager files;
        EXPECT_TRUE(files.replace(path, "old"));
        ::chmod(folder.path().c_str(), 0500);
        EXPECT_FALSE(files.replace(path, "new"));
        EXPECT_FALSE(files.replace(folder.path() + "/other", "new"));
        EXPECT_FALSE(files.createDirectories(folder.path() + "/a/b"));
        EXPECT_EQ(files.read(path, plenty), "old");
        ::chmod(path.c_str(), 0);
        EXPECT_EQ(files.read(path, plenty), std::nullopt);
        EXPECT_FALSE(files.fileExists(path));
        ::chmod(folder.path().c_str(), 0700);
        EXPECT_EQ(entriesIn(folder.path()), 1);
        EXPECT_EQ(files.homeDirectory().starts_with('/'), std::getenv("HOME") != nullptr);
    });
    EXPECT_EQ(process.wait(), 0);
}

TEST(LinuxFileManager, OnlyAnAbsoluteHomeCountsAndNobodyNeedsOne)
{
    const TemporaryHome home;
    const LinuxFileManager files;
    EXPECT_EQ(files.homeDirectory(), home.path());
    for (const auto& [value, expected] :
        { std::pair { "/a/b//", "/a/b" }, { "/", "/" }, { "//", "/" }, { "/a b", "/a b" } }) {
        ::setenv("HOME", value, 1);
        EXPECT_EQ(files.homeDirectory(), expected) << value;
    }
    ::unsetenv("HOME");
    const std::string listed = files.homeDirectory();
    for (const char* value : { "", "relative", "~" }) {
        ::setenv("HOME", value, 1);
        EXPECT_EQ(files.homeDirectory(), listed) << value;
    }
    if (::geteuid() != 0)
        return;
    ForkedProcess stranger([&] {
        becomeOrdinaryUser(home.path());
        EXPECT_EQ(files.homeDirectory(), "") << "no variable and no entry";
    });
    EXPECT_EQ(stranger.wait(), 0);
}

TEST(LinuxFileManager, ReadersOfManyWritersSeeOneWholeTextAndNothingIsLeft)
{
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/f";
    const auto text = [](char letter) { return std::string(200'000, letter); };
    LinuxFileManager files;
    ASSERT_TRUE(files.replace(path, text('a')));
    std::atomic<int> writing = 3;
    std::atomic<int> failed = 0;
    {
        std::vector<std::jthread> writers;
        // Each has its own manager: the names of their temporary files meet.
        for (const char letter : { 'a', 'b', 'c' })
            writers.emplace_back([&, letter] {
                LinuxFileManager own;
                for (int i = 0; i < 40; ++i)
                    if (!own.replace(path, text(letter)))
                        ++failed;
                --writing;
            });
        while (writing > 0) {
            const auto seen = files.read(path, plenty);
            ASSERT_TRUE(seen && (*seen == text('a') || *seen == text('b') || *seen == text('c')));
        }
    }
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(entriesIn(folder.path()), 1);
}

TEST(LinuxFileManager, TheNextReplacementRemovesLeftoversOfTheDeadAndNothingElse)
{
    const std::pair<const char*, bool> names[] { { "f.1.2.tmp", true },
        { "f.999999.18446744073709551615.tmp", true }, { "f.1.tmp", false }, { "f.1.2", false },
        { "f.1.2.tmpx", false }, { "f..2.tmp", false }, { "f.1..tmp", false }, { "f.1a.2.tmp", false },
        { "f.1.2.3.tmp", false }, { "f1.2.tmp", false }, { "f.tmp", false }, { "g.1.2.tmp", false },
        { ".f.1.2.tmp", false }, { "f.-1.2.tmp", false } };
    const TemporaryFolder folder;
    for (const auto& [name, removed] : names)
        folder.write(name, "x");
    fs::create_directory(folder.path() + "/f.3.3.tmp");
    fs::create_symlink("g.1.2.tmp", folder.path() + "/f.4.4.tmp");
    folder.write("f.5.5.tmp", "of a writer that lives");
    const int writer = ::open((folder.path() + "/f.5.5.tmp").c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(writer, LOCK_EX | LOCK_NB), 0);

    LinuxFileManager files;
    EXPECT_TRUE(files.replace(folder.path() + "/f", "new"));
    for (const auto& [name, removed] : names)
        EXPECT_EQ(fs::exists(folder.path() + "/" + name), !removed) << name;
    for (const char* kept : { "f.3.3.tmp", "f.4.4.tmp", "f.5.5.tmp" })
        EXPECT_TRUE(fs::exists(folder.path() + "/" + kept)) << kept;
    ::close(writer);
    EXPECT_TRUE(files.replace(folder.path() + "/f", "newer"));
    EXPECT_FALSE(fs::exists(folder.path() + "/f.5.5.tmp"));
}

} // namespace
