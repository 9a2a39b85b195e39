// SPDX-License-Identifier: Apache-2.0
#include "collector/CollectorRunner.h"

#include "core/Text.h"

#include <cstddef>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::size_t longestErrorText = 600;

/// The user's shell profile has no say in what the scripts find.
constexpr const char* searchPath = "/usr/bin:/bin:/usr/sbin:/sbin";

std::string errorText(const platform::ChildOutcome& outcome, platform::Seconds timeout)
{
    // The clock comes first: what ended just at the deadline, with whatever status, was too slow.
    if (outcome.elapsed >= timeout)
        return fmt::format("Collector timed out after {}s", static_cast<std::int64_t>(timeout.count()));
    if (outcome.status == 0)
        return {};
    std::string text = outcome.errorOutput.substr(0, longestErrorText);
    return isValidUtf8(text) ? text : "Collector stopped";
}

} // namespace

CollectorRunner::CollectorRunner(platform::ChildProcess& children)
    : children_(children)
{
}

CollectorResult CollectorRunner::run(RunRequest request)
{
    platform::ChildRequest child { .executable = std::move(request.executable),
        .arguments = std::move(request.arguments),
        .environment = children_.environment(),
        .input = std::move(request.input),
        .timeout = request.timeout };
    child.environment.insert_or_assign("PATH", searchPath);
    const auto stop = children_.makeStop();
    std::uint64_t run = 0;
    {
        const std::lock_guard lock(lock_);
        run = nextRun_++;
        active_.emplace(run, stop);
    }
    platform::ChildOutcome outcome = children_.run(child, stop);
    {
        const std::lock_guard lock(lock_);
        active_.erase(run);
        idle_.notify_all();
    }
    if (!outcome.launchError.empty())
        return { .error = "Could not start Python 3: " + outcome.launchError,
            .elapsed = outcome.elapsed.count() };
    return { .data = std::move(outcome.output),
        .status = outcome.status,
        .error = errorText(outcome, request.timeout),
        .elapsed = outcome.elapsed.count() };
}

void CollectorRunner::cancelAll()
{
    std::vector<std::shared_ptr<platform::ChildStop>> running;
    {
        const std::lock_guard lock(lock_);
        for (const auto& [run, stop] : active_)
            running.push_back(stop);
    }
    for (const auto& stop : running)
        stop->stop();
}

bool CollectorRunner::awaitIdle(platform::Seconds limit)
{
    std::unique_lock lock(lock_);
    return idle_.wait_for(lock, limit, [this] { return active_.empty(); });
}

} // namespace ostrel
