// SPDX-License-Identifier: Apache-2.0
#include "collector/SnapshotCycle.h"

#include "core/Json.h"
#include "core/Text.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr platform::Seconds shortestStaleAge { 30 };

} // namespace

SnapshotCycle::SnapshotCycle(
    const Platform& platform, std::shared_ptr<CollectorRunner> runner, const NativeTick& tick)
    : platform_(platform)
    , runner_(std::move(runner))
    , tick_(tick)
{
}

void SnapshotCycle::connect(PanelBody& body, Readout& readout)
{
    body_ = &body;
    readout_ = &readout;
}

void SnapshotCycle::setBusy(std::function<bool()> busy) { busy_ = std::move(busy); }

void SnapshotCycle::show(std::optional<OstrelData> data, std::string_view source, std::string_view state)
{
    lastData_ = std::move(data);
    backendLastSource_ = source;
    backendState_ = state;
}

std::string SnapshotCycle::pyPath() const
{
    if (auto path = platform_.bundle.pathForResource("collectors/ostrel.py"))
        return *path;
    return platform_.files.homeDirectory() + "/Library/Application Support/Ostrel/runtime/ostrel.py";
}

void SnapshotCycle::ensureCollectorAvailable()
{
    const std::string path = pyPath();
    backendState_ = platform_.files.fileExists(path) ? "on-demand CLI · no server"
                                                     : fmt::format("collector missing: {}", path);
}

void SnapshotCycle::startPanelPolling()
{
    fetchPythonData();
    panelTimer_ = platform_.loop.scheduleRepeating(tick_.panelInterval(), [this] { fetchPythonData(); });
}

void SnapshotCycle::invalidateTimer() { panelTimer_.reset(); }

void SnapshotCycle::profileChanged()
{
    if (body_ && body_->shown())
        startPanelPolling();
}

void SnapshotCycle::fetchPythonData()
{
    if (isFetchingPythonData_ || (busy_ && busy_()))
        return;
    isFetchingPythonData_ = true;
    ensureCollectorAvailable();
    if (!lastData_ && body_)
        body_->renderBody();
    fetchPythonDataViaCommand();
}

SnapshotCycle::Answer SnapshotCycle::judged(CollectorResult result)
{
    Answer answer { .result = std::move(result), .data = std::nullopt };
    if (answer.result.status != 0)
        return answer;
    const auto object = json::parseObject(answer.result.data);
    if (object && json::object(*object, "ram") && json::object(*object, "swap"))
        answer.data = OstrelData::parse(*object);
    return answer;
}

void SnapshotCycle::fetchPythonDataViaCommand()
{
    const auto deliver = life_.guard(
        [this, generation = generation_](Answer& answer) { receive(generation, std::move(answer)); });
    platform_.globalQueue.async(platform::QueuePriority::utility,
        [runner = runner_, path = pyPath(), deliver, &mainQueue = platform_.mainQueue] {
            auto answer = std::make_shared<Answer>(judged(runner->run({ .arguments = { path, "json" } })));
            mainQueue.post([deliver, answer] { deliver(*answer); });
        });
}

bool SnapshotCycle::bodyShowsSnapshot() const
{
    return body_ && body_->mode() != OstrelMode::server && body_->mode() != OstrelMode::settings;
}

void SnapshotCycle::receive(std::int64_t generation, Answer answer)
{
    // The closing that raised the generation has reset the flag already, and a newer fetch may own it by now.
    if (generation != generation_)
        return;
    isFetchingPythonData_ = false;
    collectorLatency_ = answer.result.elapsed;
    if (!answer.data) {
        backendLastSource_ = "error";
        backendState_ = answer.result.error.empty() ? "Collector returned invalid data" : answer.result.error;
        if (bodyShowsSnapshot())
            body_->renderBody();
        return;
    }
    backendLastSource_ = "local CLI";
    backendState_ = fmt::format("snapshot {:.0f} ms", collectorLatency_ * 1000);
    lastData_ = std::move(answer.data);
    lastSnapshotJSON_ = std::move(answer.result.data);
    lastSnapshotAt_ = platform_.clock.now();
    if (bodyShowsSnapshot())
        body_->renderBodyThrottled(true);
    if (readout_)
        readout_->refresh();
}

void SnapshotCycle::panelDidClose()
{
    invalidateTimer();
    ++generation_;
    runner_->cancelAll();
    isFetchingPythonData_ = false;
}

bool SnapshotCycle::snapshotIsStale() const
{
    if (backendLastSource_ == "error")
        return true;
    if (!lastSnapshotAt_)
        return false;
    const auto limit = std::max(shortestStaleAge, tick_.panelInterval() * 2);
    return platform_.clock.now() - *lastSnapshotAt_ > limit;
}

std::optional<std::string> SnapshotCycle::snapshotAgeText() const
{
    if (!lastSnapshotAt_)
        return std::nullopt;
    const platform::Seconds since = platform_.clock.now() - *lastSnapshotAt_;
    const std::int64_t age = rounded(since.count());
    if (age < 60)
        return fmt::format("{}s ago", std::max<std::int64_t>(0, age));
    if (age < 3600)
        return fmt::format("{}m ago", age / 60);
    return fmt::format("{}h ago", age / 3600);
}

} // namespace ostrel
