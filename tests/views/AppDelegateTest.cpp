// SPDX-License-Identifier: Apache-2.0
#include "views/AppBench.h"

#include "support/QtEnvironment.h"

#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

[[maybe_unused]] auto* const qt = testing::AddGlobalTestEnvironment(new QtEnvironment);

constexpr const char* historyFile
    = "/home/someone/Library/Application Support/ostrel/dashboard-history.jsonl";

TEST(AppDelegate, ConstructingItTouchesNothing)
{
    AppBench bench;
    EXPECT_EQ(bench.time.timers(), 0);
    EXPECT_EQ(bench.kernel.reads, 0);
    EXPECT_TRUE(bench.globalQueue.waiting.empty());
    EXPECT_TRUE(bench.children.requests.empty());
    EXPECT_TRUE(bench.defaults.values.empty());
    EXPECT_EQ(bench.files.writes, 0);
    EXPECT_TRUE(bench.statusBar.ids.empty());
    EXPECT_FALSE(bench.delegate.frame().rootView());
}

TEST(AppDelegate, StartsInOrderAndInTheBackgroundOpensNoPanel)
{
    AppBench bench;
    bench.defaults.setText("dev.quent.ostrel.refresh", "calm");
    bench.files.contents[historyFile] = "{\"m\":28333332,\"cpu\":1,\"swap\":2,\"ram\":3,\"load\":1.00}\n";
    std::vector<std::string> faces;
    bench.statusBar.onFace = [&] {
        faces.push_back(bench.delegate.tick().lastNative() ? "after a tick" : "before the first tick");
        EXPECT_EQ(bench.delegate.tick().nativeInterval().count(), 10) << "the settings come before the item";
        EXPECT_EQ(bench.delegate.snapshots().backendState(), "collector missing: /opt/ostrel.py");
        EXPECT_EQ(bench.delegate.history().restored, 1U) << "the history comes before the item";
    };
    bench.delegate.applicationDidFinishLaunching(true);
    EXPECT_EQ(faces, (std::vector<std::string> { "before the first tick", "after a tick" }));
    EXPECT_EQ(bench.statusBar.ids, (std::vector<std::string> { "dev.quent.ostrel ostrel" }));
    ASSERT_FALSE(bench.statusBar.faces.back().images.empty());
    EXPECT_EQ(bench.delegate.history().points.size(), 2U);
    EXPECT_FALSE(bench.delegate.frame().shown());
    EXPECT_TRUE(bench.children.requests.empty());
    EXPECT_EQ(bench.time.timers(), 1);
    EXPECT_EQ(bench.files.writes, 0) << "the tick doesn't wait for the disk";
    ASSERT_EQ(bench.globalQueue.waiting.size(), 1U);
    EXPECT_EQ(bench.globalQueue.waiting.front().first, platform::QueuePriority::utility);
    bench.globalQueue.run();
    EXPECT_EQ(bench.files.contents[historyFile], bench.delegate.history().serialized());
    bench.time.advance(platform::Seconds(30));
    EXPECT_EQ(faces.size(), 5U) << "a tick each ten seconds";
}

TEST(AppDelegate, APlainStartOpensThePanelAndFetchesWhileItIsOpen)
{
    AppBench bench;
    bench.delegate.applicationDidFinishLaunching(false);
    EXPECT_TRUE(bench.delegate.frame().shown());
    EXPECT_EQ(bench.time.timers(), 2);
    bench.answer(snapshotText(1));
    ASSERT_EQ(bench.children.requests.size(), 1U);
    EXPECT_EQ(bench.children.requests[0].arguments, (std::vector<std::string> { "/opt/ostrel.py", "json" }));
    bench.time.advance(platform::Seconds(15));
    bench.globalQueue.run();
    bench.time.runPosted();
    EXPECT_EQ(bench.children.requests.size(), 2U);
    bench.delegate.panel().close("esc");
    EXPECT_FALSE(bench.delegate.frame().shown());
    EXPECT_EQ(bench.time.timers(), 1);
    bench.time.advance(platform::Seconds(60));
    bench.globalQueue.run();
    EXPECT_EQ(bench.children.requests.size(), 2U) << "a closed panel starts no child";
    EXPECT_TRUE(bench.delegate.snapshots().lastData());
}

TEST(AppDelegate, APressOnTheItemOpensAndClosesThePanel)
{
    AppBench bench;
    bench.delegate.applicationDidFinishLaunching(true);
    bench.statusBar.activate(std::nullopt);
    EXPECT_TRUE(bench.delegate.frame().shown());
    bench.statusBar.activate(std::nullopt);
    EXPECT_FALSE(bench.delegate.frame().shown());
    for (const platform::MenuItem& row : bench.statusBar.menu())
        if (row.title == "show panel" || row.title == "quit")
            row.action();
    EXPECT_TRUE(bench.delegate.frame().shown());
    EXPECT_EQ(bench.quits, 1);
}

TEST(AppDelegate, EndsWithItsTimersFirstThenTheChildrenThenTheItem)
{
    AppBench bench;
    bench.delegate.applicationDidFinishLaunching(false);
    std::promise<void> started;
    std::promise<void> mayEnd;
    bench.children.whileRunning = [&] {
        started.set_value();
        mayEnd.get_future().wait();
    };
    std::thread background([&] { bench.globalQueue.run(); });
    started.get_future().wait();
    bool left = false;
    bench.statusBar.onRemove = [&] {
        EXPECT_EQ(bench.time.timers(), 0);
        EXPECT_EQ(*bench.children.stops, 1) << "the collector's child was asked to end";
        left = true;
        mayEnd.set_value();
    };
    bench.delegate.applicationWillTerminate();
    background.join();
    EXPECT_TRUE(left);
    const int reads = bench.kernel.reads;
    bench.time.advance(platform::Seconds(60));
    EXPECT_EQ(bench.kernel.reads, reads);
    EXPECT_EQ(bench.children.requests.size(), 1U);
}

} // namespace
