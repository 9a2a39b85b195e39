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

TEST(AppDelegate, ConstructingItTouchesNothing)
{
    AppBench bench;
    EXPECT_EQ(bench.time.timers(), 0);
    EXPECT_EQ(bench.kernel.reads, 0);
    EXPECT_TRUE(bench.defaults.values.empty());
    EXPECT_TRUE(bench.statusBar.ids.empty());
    EXPECT_FALSE(bench.delegate.frame().rootView());
}

TEST(AppDelegate, StartsInOrderAndInTheBackgroundOpensNoPanel)
{
    AppBench bench;
    const std::string historyFile = OstrelHistory::defaultPath("/home/someone");
    bench.defaults.setText("dev.quent.ostrel.refresh", "calm");
    bench.files.contents[historyFile] = "{\"m\":28333332,\"cpu\":1,\"swap\":2,\"ram\":3,\"load\":1.00}\n";
    std::vector<std::string> faces;
    bench.statusBar.onFace = [&] {
        faces.push_back(bench.delegate.tick().lastNative() ? "after a tick" : "before the first tick");
        EXPECT_EQ(bench.delegate.tick().nativeInterval().count(), 10) << "the settings come before the item";
        EXPECT_EQ(bench.delegate.snapshots().backendState(), "collector missing: /opt/ostrel.py");
        EXPECT_EQ(bench.delegate.history().restored, 1U) << "the history comes before the item";
    };
    bench.start({ .background = true });
    EXPECT_EQ(faces, (std::vector<std::string> { "before the first tick", "after a tick" }));
    EXPECT_FALSE(bench.delegate.frame().shown());
    EXPECT_EQ(bench.files.contents[historyFile].find("\"cpu\":1,"), 14U)
        << "the tick doesn't wait for the disk";
    ASSERT_EQ(bench.globalQueue.waiting.size(), 1U);
    EXPECT_EQ(bench.globalQueue.waiting.front().first, platform::QueuePriority::utility);
    bench.globalQueue.run();
    EXPECT_EQ(bench.files.contents[historyFile], bench.delegate.history().serialized());
}

TEST(AppDelegate, LeavesToAnElderAtOnceOrAtASecondLookAndStartsNothingBefore)
{
    AppBench early;
    early.instances.rest = { { .pid = 9, .launch = 1 } };
    EXPECT_FALSE(early.delegate.applicationDidFinishLaunching({ .urls = { "ostrel:" } }));
    EXPECT_EQ(early.urlEvents.handed, (std::vector<std::vector<std::string>> { { "ostrel:" } }));
    EXPECT_TRUE(early.statusBar.ids.empty());

    AppBench late;
    EXPECT_TRUE(late.delegate.applicationDidFinishLaunching({}));
    late.instances.rest = early.instances.rest;
    late.time.advance(platform::Seconds(1.1));
    EXPECT_EQ(late.quits, 0);
    late.time.advance(platform::Seconds(0.1));
    EXPECT_EQ(late.quits, 1);
    EXPECT_EQ(late.urlEvents.handed.size(), 1U);
}

TEST(AppDelegate, AddressesStandInPlaceOfOpeningAndEveryWayInReachesThePanel)
{
    AppBench bench;
    EXPECT_TRUE(bench.delegate.applicationDidFinishLaunching({ .urls = { "ostrel://hide" } }));
    EXPECT_FALSE(bench.delegate.panel().shown());
    bench.urlEvents.handlers.open("ostrel://toggle");
    EXPECT_TRUE(bench.delegate.panel().shown());
    bench.notifications.post("dev.quent.ostrel.testbed", { { "action", "hide" } });
    bench.notifications.observers.tell();
    EXPECT_FALSE(bench.delegate.panel().shown());
    bench.urlEvents.handlers.reopen();
    EXPECT_TRUE(bench.delegate.panel().shown());
    bench.delegate.panel().close("test");
    bench.urlEvents.handlers.action("settings");
    EXPECT_TRUE(bench.delegate.panel().shown());
    EXPECT_EQ(bench.delegate.frame().mode(), OstrelMode::settings);
}

TEST(AppDelegate, APlainStartOpensThePanelAndFetchesWhileItIsOpen)
{
    AppBench bench;
    bench.start();
    EXPECT_TRUE(bench.delegate.frame().shown());
    bench.fetch(snapshotText(1));
    bench.time.advance(platform::Seconds(15));
    bench.deliver();
    std::vector<std::string> started;
    for (const auto& request : bench.children.requests)
        started.push_back(request.arguments[0] + " " + request.arguments[1]);
    const std::vector<std::string> expected { "/opt/ostrel.py json", "../automations_bridge.py list",
        "/opt/ostrel.py json" };
    EXPECT_EQ(started, expected);
    bench.delegate.panel().close("esc");
    bench.time.advance(platform::Seconds(60));
    bench.deliver();
    EXPECT_EQ(bench.children.requests.size(), 3U) << "a closed panel starts no child";
}

TEST(AppDelegate, EndsWithItsTimersFirstThenTheChildrenThenTheItem)
{
    AppBench bench;
    bench.start();
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
}

} // namespace
