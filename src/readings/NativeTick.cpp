// SPDX-License-Identifier: Apache-2.0
#include "readings/NativeTick.h"

#include "core/Text.h"

#include <array>

namespace ostrel {

namespace {

using namespace std::chrono_literals;

struct RefreshProfile {
    std::string_view name;
    platform::Seconds nativeInterval;
    platform::Seconds panelInterval;
};

constexpr RefreshProfile normalProfile { "normal", 5s, 15s };
constexpr std::array<RefreshProfile, 3> profiles { { { "fast", 3s, 8s }, normalProfile,
    { "calm", 10s, 30s } } };

/// Beyond this many periods without a tick the machine slept or the process was stopped: what was gathered
/// before doesn't join on to what comes now.
constexpr double longestGapInPeriods = 2.5;

template <typename T>
void appendBounded(std::vector<T>& record, T value)
{
    if (record.size() >= NativeTick::rollingCapacity)
        record.erase(record.begin());
    record.push_back(value);
}

} // namespace

NativeTick::NativeTick(platform::Kernel& kernel, CPUSampler& sampler, platform::Clock& clock,
    platform::RunLoop& loop, platform::UserDefaults& defaults)
    : kernel_(kernel)
    , sampler_(sampler)
    , clock_(clock)
    , loop_(loop)
    , defaults_(defaults)
{
    cpuHistory_.reserve(rollingCapacity);
    swapHistory_.reserve(rollingCapacity);
    nativeSampleTimes_.reserve(rollingCapacity);
}

void NativeTick::connect(TickSink& sink, RefreshListener& listener)
{
    sink_ = &sink;
    listener_ = &listener;
}

void NativeTick::startNativeTimer()
{
    nativeTimer_.reset();
    tickNative();
    nativeTimer_ = loop_.scheduleRepeating(nativeInterval_, [this] { tickNative(); });
}

void NativeTick::stopNativeTimer() { nativeTimer_.reset(); }

void NativeTick::tickNative()
{
    const platform::Instant now = clock_.now();
    const auto longestGap = nativeInterval_ * longestGapInPeriods;
    if (!nativeSampleTimes_.empty() && now - nativeSampleTimes_.back() > longestGap) {
        cpuHistory_.clear();
        swapHistory_.clear();
        nativeSampleTimes_.clear();
    }
    appendBounded(nativeSampleTimes_, now);
    lastCPU_ = sampler_.sample();
    appendBounded(cpuHistory_, rounded(lastCPU_));
    lastNative_ = readNativeStats(kernel_);
    appendBounded(swapHistory_, lastNative_->swapPct());
    if (!sink_)
        return;
    sink_->recordMinute({ .cpu = rounded(lastCPU_),
        .swap = lastNative_->swapPct(),
        .ram = lastNative_->memPct(),
        .load = lastNative_->load1,
        .at = now });
    sink_->updateStatusButton();
    sink_->considerCompanion();
    if (sink_->panelShown())
        sink_->refreshPanel();
}

void NativeTick::applyRefresh(std::string_view profile)
{
    const RefreshProfile* chosen = &normalProfile;
    for (const RefreshProfile& known : profiles)
        if (known.name == profile)
            chosen = &known;
    nativeInterval_ = chosen->nativeInterval;
    panelInterval_ = chosen->panelInterval;
}

void NativeTick::setRefresh(std::string_view profile)
{
    defaults_.setText(refreshKey, profile);
    applyRefresh(profile);
    startNativeTimer();
    if (listener_)
        listener_->profileChanged();
}

void NativeTick::show(const NativeStats& native, double cpu)
{
    lastNative_ = native;
    lastCPU_ = cpu;
}

NativeStats NativeTick::native() const { return lastNative_ ? *lastNative_ : readNativeStats(kernel_); }

std::string_view gaugeLevel(bool warn, bool crit)
{
    if (crit)
        return "crit";
    return warn ? "warn" : "normal";
}

} // namespace ostrel
