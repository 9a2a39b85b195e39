// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxFileManager.h"

#include "support/ForkedProcess.h"
#include "support/TemporaryFolder.h"
#include "support/TemporaryHome.h"
#include "support/Waiting.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

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
        for (const auto& [name, text] :
            { std::pair { "file", "contents" }, { "behind", "contents" }, { "empty", "" } })
            write(name, text);
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
    const Case cases[] { { "file", plenty, "contents", true }, { "file", 8, "contents", true },
        { "file", 7, {}, true }, { "empty", 0, "", true }, { "chain", plenty, "contents", true },
        { "folder", plenty, {}, false }, { "tofolder", plenty, {}, false }, { "pipe", plenty, {}, true },
        { "dangling", plenty, {}, false }, { "loop", plenty, {}, false }, { "file/x", plenty, {}, false },
        { "../../../../dev/zero", plenty, {}, true }, { "", plenty, {}, false } };
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
        std::string name;
        bool replaced;
        bool staysLink = false;
    };
    const Case cases[] { { "file", true }, { "absent", true }, { "pipe", true }, { "link", true, true },
        { "chain", true, true }, { "dangling", true }, { "loop", true }, { "tofolder", true },
        { "topipe", true }, { "folder", false }, { "folder/absent/x", false }, { "file/x", false } };
    const std::string text(300'000, 'n');
    for (const Case& c : cases) {
        const Kinds kinds;
        const std::string path = kinds.at(c.name);
        ::chmod(kinds.at("file").c_str(), 0644);
        const auto before = entriesIn(kinds.path());
        LinuxFileManager files;
        EXPECT_EQ(files.replace(path, text), c.replaced) << c.name;
        EXPECT_EQ(fs::is_symlink(path), c.staysLink) << c.name;
        EXPECT_EQ(entriesIn(kinds.path()), before + (c.name == "absent" ? 1 : 0)) << c.name;
        EXPECT_EQ(files.read(kinds.at("behind"), plenty), c.staysLink ? text : "contents") << c.name;
        if (!c.replaced)
            continue;
        EXPECT_EQ(files.read(path, plenty), text) << c.name;
        EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600)) << c.name;
        EXPECT_TRUE(files.replace(path, "") && files.read(path, plenty) == "") << c.name;
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
        for (const rlim_t room : { 0, 1, 4096, 99'999, 100'000 }) {
            const rlimit limit { room, RLIM_INFINITY };
            ::setrlimit(RLIMIT_FSIZE, &limit);
            const std::string text(100'000, 'n');
            EXPECT_EQ(files.replace(path, text), room >= text.size()) << room;
            EXPECT_EQ(files.read(path, plenty), room < text.size() ? "old" : text) << room;
            EXPECT_EQ(entriesIn(folder.path()), 1) << room;
        }
    });
    EXPECT_EQ(process.wait(), 0);
}

TEST(LinuxFileManager, OnlyAnAbsoluteHomeCountsAndNobodyNeedsOne)
{
    const TemporaryHome home;
    const LinuxFileManager files;
    ::unsetenv("HOME");
    const std::string listed = files.homeDirectory();
    for (const auto& [value, expected] : { std::pair { home.path(), home.path() }, { "/a b//", "/a b" },
             { "//", "/" }, { "", listed }, { "relative", listed }, { "~", listed } }) {
        ::setenv("HOME", value.c_str(), 1);
        EXPECT_EQ(files.homeDirectory(), expected) << value;
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
                    failed += !own.replace(path, text(letter));
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
    const TemporaryFolder folder;
    const auto stands = [&folder](const char* name) { return fs::exists(folder.path() + "/" + name); };
    const char* const removed[] { "f.1.2.tmp", "f.999999.18446744073709551615.tmp" };
    const char* const kept[] { "f.1.tmp", "f.1.2", "f.1.2.tmpx", "f..2.tmp", "f.1..tmp", "f.1a.2.tmp",
        "f.1.2.3.tmp", "f1.2.tmp", "f.tmp", "g.1.2.tmp", ".f.1.2.tmp", "f.-1.2.tmp", "f.3.3.tmp/in",
        "f.5.5.tmp" };
    for (const char* name : removed)
        folder.write(name, "x");
    for (const char* name : kept)
        folder.write(name, "x");
    fs::create_symlink("g.1.2.tmp", folder.path() + "/f.4.4.tmp");
    // The last one's writer lives.
    const int writer = ::open((folder.path() + "/f.5.5.tmp").c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(writer, LOCK_EX | LOCK_NB), 0);

    LinuxFileManager files;
    EXPECT_TRUE(files.replace(folder.path() + "/f", "new"));
    for (const char* name : removed)
        EXPECT_FALSE(stands(name)) << name;
    for (const char* name : kept)
        EXPECT_TRUE(stands(name)) << name;
    EXPECT_TRUE(stands("f.4.4.tmp"));
    ::close(writer);
    EXPECT_TRUE(files.replace(folder.path() + "/f", "newer"));
    EXPECT_FALSE(stands("f.5.5.tmp"));
}

TEST(LinuxFileManager, ALineIsAddedToRegularFilesOnlyAndEndsATornOneFirst)
{
    const Kinds kinds;
    kinds.write("whole", "one\n");
    struct Case {
        const char* name;
        bool added;
        std::optional<std::string> contents;
    };
    const Case cases[] { { "dangling", false, {} }, { "absent", true, "line\n" }, { "empty", true, "line\n" },
        { "whole", true, "one\nline\n" }, { "file", true, "contents\nline\n" }, { "pipe", false, {} },
        { "folder", false, {} }, { "link", false, "contents" }, { "no/such/folder", false, {} } };
    LinuxFileManager files;
    for (const Case& c : cases) {
        EXPECT_EQ(files.appendLine(kinds.at(c.name), "line"), c.added) << c.name;
        EXPECT_EQ(files.read(kinds.at(c.name), plenty), c.contents) << c.name;
    }
    EXPECT_EQ(fs::status(kinds.at("absent")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(LinuxFileManager, ALineThatDoesNotFitIsToldAndTheNextOneStandsAlone)
{
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/lines";
    ForkedProcess full([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        LinuxFileManager files;
        EXPECT_TRUE(files.appendLine(path, "one"));
        const rlimit small { 8, RLIM_INFINITY };
        ::setrlimit(RLIMIT_FSIZE, &small);
        EXPECT_FALSE(files.appendLine(path, "longer"));
    });
    EXPECT_EQ(full.wait(), 0);
    LinuxFileManager files;
    EXPECT_TRUE(files.appendLine(path, "two"));
    EXPECT_EQ(files.read(path, plenty), "one\nlong\ntwo\n");
}

TEST(LinuxFileManager, SeveralProcessesAddLinesAtOnceAndLoseNone)
{
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/lines";
    constexpr int writers = 4;
    constexpr int each = 500;
    std::vector<std::unique_ptr<ForkedProcess>> processes;
    processes.reserve(writers);
    for (int writer = 0; writer < writers; ++writer)
        processes.push_back(std::make_unique<ForkedProcess>([&path, writer] {
            LinuxFileManager files;
            for (int line = 0; line < each; ++line)
                EXPECT_TRUE(files.appendLine(
                    path, std::to_string(writer) + "." + std::to_string(line) + std::string(600, 'x')));
        }));
    for (const auto& process : processes)
        EXPECT_EQ(process->wait(), 0);
    std::ifstream file(path);
    std::vector<int> next(writers, 0);
    for (std::string line; std::getline(file, line);) {
        // A line of another that was seen half there is ended for it.
        if (line.empty())
            continue;
        const auto writer = static_cast<std::size_t>(line[0] - '0');
        ASSERT_LT(writer, next.size());
        ASSERT_EQ(
            line, std::to_string(writer) + "." + std::to_string(next[writer]++) + std::string(600, 'x'));
    }
    EXPECT_EQ(next, std::vector<int>(writers, each));
}

} // namespace
