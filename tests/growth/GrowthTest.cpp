// SPDX-License-Identifier: Apache-2.0
/// What runs for weeks must hold after the last time what it held after the first ones. The few repetitions
/// here find what leaks by the object; OSTREL_GROWTH=full makes it the many that find what leaks by the byte.
#include "views/OpenTab.h"

#include "collector/CollectorRunner.h"
#include "platform/linux/LinuxChildProcess.h"

#include "support/QtEnvironment.h"

#include <QApplication>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <type_traits>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <malloc.h>

namespace {

using namespace ostrel;
using platform::Seconds;

[[maybe_unused]] auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);

/// The toolkit's caches still fill a little. The allocator keeps what each thread freed for its next wish and
/// counts it as in use, unless the tests' list of programs told it not to.
std::size_t slackBytes()
{
    constexpr std::size_t kilobyte = 1024;
    return (std::getenv("GLIBC_TUNABLES") ? 24 : 256) * kilobyte;
}

bool isFull()
{
    const char* const wish = std::getenv("OSTREL_GROWTH");
    return wish && std::string_view(wish) == "full";
}

int times(int full, int part) { return isFull() ? full : part; }

std::ptrdiff_t entriesIn(const char* folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

/// Of the main thread, those that have ended and were not waited for too.
std::string childrenNow()
{
    std::ifstream file("/proc/thread-self/children");
    return { std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>() };
}

/// What a process can pile up.
struct Held {
    std::size_t bytes = 0; ///< of memory in use
    std::ptrdiff_t descriptors = entriesIn("/proc/self/fd");
    std::ptrdiff_t threads = entriesIn("/proc/self/task");
    std::ptrdiff_t timers = 0;
    std::size_t jobs = 0; ///< that wait for their time
    std::ptrdiff_t widgets = 0;
    std::string children = childrenNow();
};

Held heldNow(const VirtualTime* time)
{
    Held held;
    // A sanitizer's allocator has no such figures.
    const struct mallinfo2 memory = ::mallinfo2();
    held.bytes = memory.uordblks + memory.hblkhd;
    held.timers = time ? time->timers() : 0;
    held.jobs = time ? time->waiting() : 0;
    held.widgets = QApplication::allWidgets().size();
    return held;
}

/// Does it a few times, and then many times more, which must leave nothing behind.
void expectFlat(std::string_view what, int warmUp, int repetitions, const std::function<Held()>& held,
    const std::function<void()>& once)
{
    for (int n = 0; n < warmUp; ++n)
        once();
    const Held before = held();
    for (int n = 0; n < repetitions; ++n)
        once();
    const Held after = held();
    EXPECT_LE(after.bytes, before.bytes + slackBytes()) << fmt::format("{}: {} bytes more after {}", what,
        static_cast<std::ptrdiff_t>(after.bytes - before.bytes), repetitions);
    EXPECT_EQ(after.descriptors, before.descriptors) << what;
    EXPECT_EQ(after.threads, before.threads) << what;
    EXPECT_EQ(after.timers, before.timers) << what;
    // One more or less may be on its way at the end.
    EXPECT_LE(after.jobs, before.jobs + 4) << what;
    EXPECT_LE(after.widgets, before.widgets + 4) << what;
    EXPECT_EQ(after.children, before.children) << what;
}

/// What the fakes write down isn't the program's, and an empty list may still hold memory.
void forget(AppBench& bench)
{
    const auto drop = [](auto&... lists) { (std::remove_reference_t<decltype(lists)>().swap(lists), ...); };
    drop(bench.children.requests, bench.files.folders, bench.popovers.calls, bench.statusBar.faces,
        bench.notifications.posted);
}

/// The same of a bench, between whose repetitions everything comes to rest.
void expectFlat(
    std::string_view what, int warmUp, int repetitions, OpenTab& bench, const std::function<void()>& once)
{
    const auto held = [&bench] {
        bench.settle();
        forget(bench);
        return heldNow(&bench.time);
    };
    expectFlat(what, warmUp, repetitions, held, once);
}

/// The panel on a tab with many rows, once all that the start planned for later is through.
struct GrowthTab : OpenTab {
    explicit GrowthTab(OstrelMode mode)
        : OpenTab(mode)
    {
        time.advance(Seconds(120));
        settleBackground();
        fetch(snapshotText(40));
        settle();
    }
};

TEST(Growth, TicksOfAWeekLeaveNothingBehind)
{
    for (const bool open : { false, true }) {
        OpenTab bench(OstrelMode::overview);
        if (!open)
            bench.delegate.panel().close("test");
        // The history is full after a day.
        const auto interval = bench.delegate.tick().nativeInterval();
        const int day = static_cast<int>(Seconds(86400 + 7200) / interval);
        std::uint32_t busy = 0;
        const int repetitions = open ? times(20'000, 2'000) : times(100'000, 10'000);
        expectFlat(open ? "ticks with the panel open" : "ticks", day, repetitions, bench, [&] {
            bench.tick(++busy % 100);
            bench.deliver();
        });
    }
}

TEST(Growth, RendersOfEachTabLeaveNothingBehind)
{
    for (const OstrelModeWords& tab : ostrelModes()) {
        GrowthTab bench(tab.mode);
        expectFlat(tab.title, 60, times(10'000, 150), bench, [&bench] {
            bench.delegate.frame().renderBody();
            bench.deliver();
            bench.settle();
        });
    }
}

TEST(Growth, OpeningsOfThePanelLeaveNothingBehind)
{
    GrowthTab bench(OstrelMode::overview);
    expectFlat("openings", 60, times(1'000, 150), bench, [&bench] {
        bench.delegate.panel().toggle();
        bench.deliver();
        bench.settle();
        bench.delegate.panel().toggle();
        bench.time.advance(Seconds(1));
        bench.settle();
    });
}

TEST(Growth, ChildrenLeaveNothingBehind)
{
    platform::LinuxChildProcess children;
    CollectorRunner runner(children);
    const auto run = [&runner](const char* script) {
        return runner.run({ .executable = "/bin/sh",
            .arguments = { "-c", script },
            .input = "in",
            .timeout = Seconds(30) });
    };
    expectFlat(
        "children", 20, times(10'000, 300), [] { return heldNow(nullptr); },
        [&] {
            EXPECT_EQ(run("cat; echo out >&2").data, "in");
            EXPECT_EQ(run("exit 3").status, 3);
        });
}

} // namespace
