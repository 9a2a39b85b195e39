// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/LinuxRunningInstances.h"

#include "support/ForkedProcess.h"
#include "support/TemporaryHome.h"
#include "support/Waiting.h"

#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace platform;
namespace fs = std::filesystem;

TEST(StartTicks, AreReadBehindAnyNameAndOnlyOfALivingProcess)
{
    const std::string tail = " 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 987 20";
    for (const auto& [text, ticks] : std::vector<std::pair<std::string, std::optional<std::uint64_t>>> {
             { "7 (a) S" + tail, 987 }, { "7 (a) Z (b) c) R" + tail + "\n", 987 }, { "7 (a) Z" + tail, {} },
             { "7 (a) X" + tail, {} }, { "7 (a) S 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 -9 20", {} },
             { "7 (a) S 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18", {} }, { "7 (a) ", {} },
             { "7 (a)", {} }, { "", {} } })
        EXPECT_EQ(parseStartTicks(text), ticks) << text;
}

TEST(LinuxRunningInstances, AProcessIsSeenFromItsFirstLookUntilItsEndAndWhatItLeftIsCleared)
{
    const TemporaryHome home;
    LinuxRunningInstances own(home.path() + "/run");
    const RunningInstance me = own.current();
    EXPECT_EQ(me.pid, ::getpid());
    ASSERT_TRUE(me.launch);
    EXPECT_TRUE(own.others().empty());
    const auto folder = home.path() + "/run/";
    {
        ForkedProcess other([&] {
            auto* const leaves = new LinuxRunningInstances(home.path() + "/run");
            EXPECT_EQ(leaves->others(), std::vector { me });
            (void)leaves->current();
            ::pause();
        });
        ASSERT_TRUE(eventually([&] { return own.others().size() == 1; }));
        const RunningInstance found = own.others()[0];
        EXPECT_GE(found.launch, me.launch);
        EXPECT_TRUE(fs::exists(folder + std::to_string(found.pid)));
    }
    EXPECT_TRUE(own.others().empty());
    EXPECT_EQ(entriesIn(folder), 1) << "the killed one's file is gone, this one's isn't";
    own.withdraw();
    EXPECT_EQ(entriesIn(folder), 0) << "an orderly end leaves nothing";
    (void)own.current();
    EXPECT_EQ(entriesIn(folder), 1) << "it comes back";
}

TEST(LinuxRunningInstances, NothingInTheFolderDeceivesOrHoldsIt)
{
    const TemporaryHome home;
    const auto folder = home.path() + "/run/";
    LinuxRunningInstances own(home.path() + "/run");
    const RunningInstance me = own.current();
    const std::string start = std::to_string(*me.launch);
    const std::string living = std::to_string(::getppid());
    home.write("run/" + living, start + "1\n");
    home.write("run/2147483647", start + "\n");
    home.write("run/99999999999999999999", start + "\n");
    home.write("run/0" + living, start + "\n");
    home.write("run/-1", start + "\n");
    home.write("run/name", start + "\n");
    home.write("run/2147483644.new", start);
    home.write("run/" + living + ".new", start);
    home.write("run/1", std::string(std::size_t { 1 } << 20, '1'));
    fs::create_directory(folder + "3");
    ASSERT_EQ(::mkfifo((folder + "2147483646").c_str(), 0600), 0);
    fs::create_symlink(home.path() + "/run/" + std::to_string(me.pid), folder + "2147483645");
    EXPECT_TRUE(own.others().empty());
    EXPECT_FALSE(fs::exists(folder + living)) << "another process had that id";
    EXPECT_FALSE(fs::exists(folder + "2147483646"));
    EXPECT_FALSE(fs::exists(folder + "2147483644.new")) << "a start that was killed";
    EXPECT_TRUE(fs::exists(folder + living + ".new")) << "it may be about to get its name";
    EXPECT_TRUE(fs::exists(folder + std::to_string(me.pid)));
}

TEST(LinuxRunningInstances, AFolderThatIsNotTheUsersAloneIsNotUsed)
{
    const TemporaryHome home;
    const auto pid = std::to_string(::getpid());
    fs::create_directory(home.path() + "/open");
    ASSERT_EQ(::chmod((home.path() + "/open").c_str(), 0750), 0);
    fs::create_directory(home.path() + "/real");
    ASSERT_EQ(::chmod((home.path() + "/real").c_str(), 0700), 0);
    fs::create_directory_symlink(home.path() + "/real", home.path() + "/link");
    home.write("file", "");
    for (const std::string name : { "/open", "/link", "/file", "/none/run" }) {
        LinuxRunningInstances own(home.path() + name);
        EXPECT_EQ(own.current().pid, ::getpid());
        EXPECT_TRUE(own.others().empty()) << name;
        EXPECT_EQ(entriesIn(home.path() + "/open") + entriesIn(home.path() + "/real"), 0) << name;
    }
    const std::string shared = "/tmp/ostrel-" + std::to_string(::geteuid());
    for (const auto& [runtime, folder] :
        { std::pair { "/run/x", std::string("/run/x/ostrel") }, { "relative", shared }, { "", shared } }) {
        ::setenv("XDG_RUNTIME_DIR", runtime, 1);
        EXPECT_EQ(LinuxRunningInstances::defaultFolder(), folder);
    }
}

} // namespace
