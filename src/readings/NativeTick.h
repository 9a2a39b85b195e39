// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Clock.h"
#include "platform/Kernel.h"
#include "platform/Timer.h"
#include "platform/UserDefaults.h"
#include "readings/CPUSampler.h"
#include "readings/NativeStats.h"
#include "readings/TickSink.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace ostrel {

/// The heartbeat: at each period it takes a native reading, keeps a short rolling record of it, and tells
/// those who live by it. It runs from the start of the application to its end, with or without the panel.
/// Main thread.
class NativeTick {
public:
    /// How many readings the rolling record holds.
    static constexpr std::size_t rollingCapacity = 60;
    static constexpr std::string_view refreshKey = "dev.quent.ostrel.refresh";

    /// All of them must outlive the tick.
    NativeTick(platform::Kernel& kernel, CPUSampler& sampler, platform::Clock& clock, platform::RunLoop& loop,
        platform::UserDefaults& defaults);

    /// Connects the tick; both must outlive it. Before that a tick only reads.
    void connect(TickSink& sink, RefreshListener& listener);

    /// Ticks at once and then every `nativeInterval`, in place of what ran before.
    void startNativeTimer();
    /// No further tick.
    void stopNativeTimer();
    /// One tick: reading, rolling record, sinks.
    void tickNative();
    /// The intervals of a profile: "fast", "calm", and "normal" for any other text.
    void applyRefresh(std::string_view profile);
    /// The user's choice: stored, applied, and felt at once.
    void setRefresh(std::string_view profile);

    [[nodiscard]] platform::Seconds nativeInterval() const { return nativeInterval_; }
    [[nodiscard]] platform::Seconds panelInterval() const { return panelInterval_; }
    /// Nothing before the first tick.
    [[nodiscard]] const std::optional<NativeStats>& lastNative() const { return lastNative_; }
    /// The last reading, or a fresh one before the first tick.
    [[nodiscard]] NativeStats native() const;
    /// The last processor sample, 0…100.
    [[nodiscard]] double lastCPU() const { return lastCPU_; }

    /// Takes a reading and a processor sample that were made elsewhere for the last ones. Tells nobody.
    void show(const NativeStats& native, double cpu);

    /// The rolling record: one entry per tick in each, oldest first, cleared together after a gap.
    [[nodiscard]] const std::vector<std::int64_t>& cpuHistory() const { return cpuHistory_; }
    [[nodiscard]] const std::vector<std::int64_t>& swapHistory() const { return swapHistory_; }
    [[nodiscard]] const std::vector<platform::Instant>& nativeSampleTimes() const
    {
        return nativeSampleTimes_;
    }

private:
    platform::Kernel& kernel_;
    CPUSampler& sampler_;
    platform::Clock& clock_;
    platform::RunLoop& loop_;
    platform::UserDefaults& defaults_;
    TickSink* sink_ = nullptr;
    RefreshListener* listener_ = nullptr;
    platform::Seconds nativeInterval_ { 5 };
    platform::Seconds panelInterval_ { 15 };
    std::optional<NativeStats> lastNative_;
    double lastCPU_ = 0;
    std::vector<std::int64_t> cpuHistory_;
    std::vector<std::int64_t> swapHistory_;
    std::vector<platform::Instant> nativeSampleTimes_;
    std::unique_ptr<platform::Timer> nativeTimer_;
};

/// How a gauge is judged: "crit" before "warn" before "normal".
[[nodiscard]] std::string_view gaugeLevel(bool warn, bool crit);

} // namespace ostrel
