// SPDX-License-Identifier: Apache-2.0
#include "readings/NativeTick.h"

#include "support/FakeMachine.h"

#include <chrono>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace std::chrono_literals;
using Calls = std::vector<std::string>;

/// A tick with all that it needs, which also stands for those who live by it.
struct TickBench : FakeMachine, TickSink, RefreshListener {
    TickBench() { tick.connect(*this, *this); }

    void recordMinute(const MinuteReading& reading) override
    {
        minutes.push_back(reading);
        calls.push_back("minute");
    }
    void updateStatusButton() override { calls.push_back("bar"); }
    void considerCompanion() override { calls.push_back("hint"); }
    [[nodiscard]] bool panelShown() const override { return shown; }
    void refreshPanel() override { calls.push_back("panel"); }
    void profileChanged() override { calls.push_back("profile"); }

    /// Makes the next sample read this percentage.
    void setCpu(std::uint32_t percent)
    {
        kernel.ticks->user += percent;
        kernel.ticks->idle += 100 - percent;
    }

    CPUSampler sampler { kernel };
    NativeTick tick { kernel, sampler, time, time, defaults };
    bool shown = false;
    Calls calls;
    std::vector<MinuteReading> minutes;
};

TEST(NativeTick, AGapClearsTheRollingRecordOnlyBeyondTwoAndAHalfPeriods)
{
    for (const auto& [gap, kept] :
        { std::pair { platform::Seconds(7.5), 3U }, { platform::Seconds(7.6), 1U } }) {
        TickBench bench;
        bench.tick.applyRefresh("fast");
        bench.tick.tickNative();
        bench.time.jump(3s);
        bench.tick.tickNative();
        bench.time.jump(gap);
        bench.tick.tickNative();
        EXPECT_EQ(bench.tick.cpuHistory().size(), kept) << gap.count();
        EXPECT_EQ(bench.tick.swapHistory().size(), kept) << gap.count();
        EXPECT_EQ(bench.tick.nativeSampleTimes().size(), kept) << gap.count();
    }
}

TEST(NativeTick, TheRollingRecordHoldsTheLast60TicksForEver)
{
    TickBench bench;
    bench.kernel.reading.swapTotalBytes = 1000 * 1048576ULL;
    bench.tick.startNativeTimer();
    for (std::uint64_t n = 1; n <= 150; ++n) {
        bench.setCpu(static_cast<std::uint32_t>(n % 100));
        bench.kernel.reading.swapUsedBytes = n * 10 * 1048576;
        bench.time.advance(5s);
    }
    const auto& [cpu, swap, times]
        = std::tie(bench.tick.cpuHistory(), bench.tick.swapHistory(), bench.tick.nativeSampleTimes());
    for (const auto size : { cpu.size(), swap.size(), times.size() })
        ASSERT_EQ(size, 60U);
    EXPECT_EQ(std::pair(cpu.front(), cpu.back()), std::pair(91L, 50L));
    EXPECT_EQ(std::pair(swap.front(), swap.back()), std::pair(91L, 150L));
    EXPECT_EQ(times.back(), bench.time.now());
    EXPECT_EQ(times.front(), bench.time.now() - 59 * 5s);
}

TEST(NativeTick, TellsTheOthersInOrderAndThePanelOnlyWhileItIsShown)
{
    TickBench bench;
    bench.tick.tickNative();
    EXPECT_EQ(bench.calls, (Calls { "minute", "bar", "hint" }));
    bench.shown = true;
    bench.calls.clear();
    bench.tick.tickNative();
    EXPECT_EQ(bench.calls, (Calls { "minute", "bar", "hint", "panel" }));
}

TEST(NativeTick, HandsTheMinuteOnWithRoundedFigures)
{
    TickBench bench;
    bench.kernel.reading = { .swapTotalBytes = 8 * 1048576,
        .swapUsedBytes = 1048576,
        .load1 = 1.26,
        .physicalMemoryBytes = 1000,
        .usedBytes = 425 };
    EXPECT_FALSE(bench.tick.lastNative());
    EXPECT_EQ(bench.tick.native().swapPct(), 13) << "before the first tick a fresh reading stands in";
    bench.tick.tickNative();
    bench.kernel.ticks = platform::CpuTicks { .user = 1, .system = 0, .idle = 7, .nice = 0 };
    bench.time.jump(5s);
    bench.tick.tickNative();
    ASSERT_EQ(bench.minutes.size(), 2U);
    EXPECT_EQ(bench.minutes[0].cpu, 0) << "the first sample has nothing to compare with";
    EXPECT_EQ(bench.minutes[1],
        (MinuteReading { .cpu = 13, .swap = 13, .ram = 43, .load = 1.26, .at = bench.time.now() }));
    EXPECT_DOUBLE_EQ(bench.tick.lastCPU(), 12.5);
}

TEST(NativeTick, StartingTicksAtOnceAndReplacesTheTimerThatRan)
{
    TickBench bench;
    bench.tick.startNativeTimer();
    EXPECT_EQ(bench.kernel.reads, 1);
    bench.time.advance(4s);
    bench.tick.startNativeTimer();
    EXPECT_EQ(bench.kernel.reads, 2);
    EXPECT_EQ(bench.time.timers(), 1);
    bench.time.advance(2s);
    EXPECT_EQ(bench.kernel.reads, 2) << "the timer that ran before would have fired here";
    bench.time.advance(3s);
    EXPECT_EQ(bench.kernel.reads, 3);
    bench.tick.stopNativeTimer();
    bench.time.advance(60s);
    EXPECT_EQ(bench.kernel.reads, 3);
    EXPECT_EQ(bench.time.timers(), 0);
}

TEST(NativeTick, AProfileSetsBothIntervalsAndAnyOtherTextIsNormal)
{
    TickBench bench;
    for (const auto& [profile, native, panel] : { std::tuple { "fast", 3, 8 }, { "normal", 5, 15 },
             { "calm", 10, 30 }, { "Fast", 5, 15 }, { "", 5, 15 } }) {
        bench.tick.applyRefresh(profile);
        EXPECT_EQ(bench.tick.nativeInterval().count(), native) << profile;
        EXPECT_EQ(bench.tick.panelInterval().count(), panel) << profile;
    }
    EXPECT_TRUE(bench.defaults.values.empty()) << "applying stores nothing";
    EXPECT_EQ(bench.kernel.reads, 0) << "nor does it tick";
}

TEST(NativeTick, TheUsersChoiceIsStoredAndFeltAtOnce)
{
    TickBench bench;
    bench.tick.startNativeTimer();
    bench.time.advance(5s);
    bench.calls.clear();
    bench.time.jump(10s);
    bench.tick.setRefresh("fast");
    EXPECT_EQ(bench.defaults.text("dev.quent.ostrel.refresh"), "fast");
    EXPECT_EQ(bench.calls, (Calls { "minute", "bar", "hint", "profile" }));
    EXPECT_EQ(bench.tick.cpuHistory().size(), 1U) << "the gap rule goes by the new period";
    bench.calls.clear();
    bench.time.advance(3s);
    EXPECT_EQ(bench.calls, (Calls { "minute", "bar", "hint" }));
    EXPECT_EQ(bench.time.timers(), 1);
}

} // namespace
