// SPDX-License-Identifier: Apache-2.0
#include "views/AppBench.h"

#include "support/QtEnvironment.h"

#include <string>
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

TEST(AppDelegate, AddressesStandInPlaceOfOpeningAndEveryWayInReachesThePanel)
{
    AppBench bench;
    EXPECT_TRUE(bench.delegate.applicationDidFinishLaunching({ .urls = { "ostrel://hide" } }));
    EXPECT_FALSE(bench.delegate.panel().shown());
    bench.urlEvents.open("ostrel://toggle");
    EXPECT_TRUE(bench.delegate.panel().shown());
    bench.notifications.post("dev.quent.ostrel.testbed", { { "action", "hide" } });
    bench.notifications.observers.tell();
    EXPECT_FALSE(bench.delegate.panel().shown());
    bench.urlEvents.reopen();
    EXPECT_TRUE(bench.delegate.panel().shown());
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

} // namespace
