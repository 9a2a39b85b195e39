// SPDX-License-Identifier: Apache-2.0
#include "views/AppBench.h"

#include "support/QtEnvironment.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
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

/// A background with a thread for each job, in which every child hangs until it is let go.
class HangingBackground {
public:
    explicit HangingBackground(AppBench& bench)
        : bench_(bench)
    {
        bench_.children.whileRunning = [this] {
            std::unique_lock lock(mutex_);
            const std::size_t place = hanging_++;
            changed_.notify_all();
            changed_.wait(lock, [this, place] { return place < released_; });
        };
    }
    HangingBackground(const HangingBackground&) = delete;
    HangingBackground& operator=(const HangingBackground&) = delete;
    ~HangingBackground()
    {
        // One at a time, since the fakes know one thread.
        while (released_ < hanging_) {
            std::unique_lock lock(mutex_);
            const std::size_t ended = ended_;
            ++released_;
            changed_.notify_all();
            changed_.wait(lock, [this, ended] { return ended_ > ended; });
        }
        for (std::thread& thread : threads_)
            thread.join();
    }

    /// Starts what waits, one job after the other, each until it has ended or hangs.
    void start()
    {
        while (!bench_.globalQueue.waiting.empty()) {
            auto job = std::move(bench_.globalQueue.waiting.front().second);
            bench_.globalQueue.waiting.pop_front();
            threads_.emplace_back([this, job = std::move(job)]() mutable {
                job();
                job = nullptr;
                const std::lock_guard lock(mutex_);
                ++ended_;
                changed_.notify_all();
            });
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return hanging_ + ended_ == threads_.size(); });
        }
    }

    [[nodiscard]] std::size_t hanging()
    {
        const std::lock_guard lock(mutex_);
        return hanging_;
    }

private:
    AppBench& bench_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::thread> threads_;
    std::size_t hanging_ = 0;
    std::size_t ended_ = 0;
    std::size_t released_ = 0;
};

TEST(AppDelegate, ATickNeverWaitsForAScriptWhateverHangs)
{
    AppBench bench;
    bench.defaults.setText("ostrel.server.alias", "srv");
    HangingBackground background(bench);
    bench.start();
    for (const auto& ask : std::vector<std::function<void(AppDelegate&)>> {
             [](AppDelegate& app) { app.automationsTab().refresh(); },
             [](AppDelegate& app) { app.janitorTab().refreshFindings(); },
             [](AppDelegate& app) { app.sessionPanel().refresh(); },
             [](AppDelegate& app) { app.server().checkServer(); },
         }) {
        ask(bench.delegate);
        background.start();
    }
    EXPECT_GE(background.hanging(), 5U) << "the snapshot, and what was asked for";
    const int reads = bench.kernel.reads;
    const auto period = bench.delegate.tick().nativeInterval();
    constexpr int minutes = 30;
    for (int minute = 0; minute < minutes; ++minute) {
        bench.time.advance(std::chrono::minutes(1));
        background.start();
    }
    EXPECT_GE(bench.kernel.reads - reads, static_cast<int>(minutes * 60 / period.count()));
    EXPECT_EQ(bench.delegate.history().points.size(), minutes + 1U);
    EXPECT_EQ(bench.files.contents[OstrelHistory::defaultPath("/home/someone")],
        bench.delegate.history().serialized())
        << "what hangs holds no other job";
    EXPECT_LE(background.hanging(), 8U) << "one of each kind at a time";
}

} // namespace
