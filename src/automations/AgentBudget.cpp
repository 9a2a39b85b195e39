// SPDX-License-Identifier: Apache-2.0
#include "automations/AgentBudget.h"

#include "automations/AutomationsText.h"

#include <algorithm>
#include <cstdint>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr double longestFresh = 900; ///< seconds, after which a reading is no longer the present
constexpr std::int64_t minutesADay = 1440;
/// Whole numbers up to here are exact as a double, and fit 64 bits.
constexpr double largestWhole = 9e15;

std::int64_t truncated(double value)
{
    return static_cast<std::int64_t>(std::clamp(value, -largestWhole, largestWhole));
}

/// One row of the inventory's quotas.
struct Quota {
    std::string host;
    std::string scope;
    std::string guard;
    std::string state;
    std::string read; ///< how long ago

    Quota(const json::Value& row, double now)
        : host(json::textOr(row, "host", "unknown"))
        , scope(json::textOr(row, "scope", ""))
        , guard(json::textOr(row, "guard", "unknown"))
        , state(json::textOr(row, "state", "unavailable"))
    {
        const double checkedAt = json::numberOr(row, "checked_at", 0);
        const double age = std::max(0.0, now - checkedAt);
        if (age > longestFresh && observed())
            state = "stale";
        read = checkedAt > 0 ? fmt::format("{}m ago", truncated(age / 60)) : "not read";
    }

    [[nodiscard]] bool observed() const { return state == "observed"; }
};

std::string lengthText(std::int64_t minutes)
{
    return minutes < minutesADay ? fmt::format("{}m", minutes) : fmt::format("{}d", minutes / minutesADay);
}

AgentBudget::Window windowOf(const Quota& quota, const json::Value& window)
{
    const auto remaining = json::number(window, "remaining");
    const std::int64_t percent = truncated(remaining.value_or(0));
    const std::string value = quota.observed() ? fmt::format("{}% remaining", percent)
                                               : fmt::format("{} · refresh inventory", quota.state);
    const auto resetsAt = json::text(window, "resets_at");
    AgentBudget::Window shown {
        .line = shownText(fmt::format(
            "Codex · {} · {} · {}", quota.host, lengthText(json::integerOr(window, "minutes", 0)), value)),
        .toolTip = shownText(fmt::format("Read {}. {}. Guard: {}. Resets {}", quota.read, quota.scope,
            quota.guard, resetsAt.value_or("unknown"))),
        .level = {},
        .levelLabel = "",
        .detail = shownText(
            fmt::format("{} · {} · reset {}", quota.scope, quota.read, shortTime(resetsAt.value_or("")))),
    };
    if (quota.observed() && remaining) {
        shown.level = std::clamp(*remaining, 0.0, 100.0);
        shown.levelLabel
            = shownText(fmt::format("Codex {} · {} percent quota remaining", quota.host, percent));
    }
    return shown;
}

void addWindows(AgentBudget& budget, const json::Value& row, double now)
{
    const Quota quota(row, now);
    const json::Value none = json::Value::object();
    auto windows = objectsIn(row, "windows");
    if (windows.empty())
        windows.push_back(&none);
    for (const json::Value* window : windows) {
        if (budget.windows.size() == AgentBudget::mostWindows)
            return;
        budget.windows.push_back(windowOf(quota, *window));
    }
}

std::string schedulesText(std::span<const Automation> items)
{
    const auto count = [&](auto belongs) { return std::ranges::count_if(items, belongs, &Automation::lane); };
    const auto local = count(
        [](const std::string& lane) { return lane == "orca" || lane == "codex" || lane == "launchd"; });
    const auto server
        = count([](const std::string& lane) { return lane == "systemd" || lane == "registry"; });
    const auto cloud = count([](const std::string& lane) { return lane.find("cloud") != std::string::npos; });
    return fmt::format("SCHEDULES   Mac {}   →   server {}   ·   cloud {} unverified", local, server, cloud);
}

} // namespace

AgentBudget agentBudget(
    std::span<const json::Value> quotas, std::span<const Automation> items, platform::Instant now)
{
    AgentBudget budget { .title = "AGENT BUDGET · ACCOUNT QUOTA",
        .windows = {},
        .notRead = quotas.empty() ? "Quota not read yet · open automations to refresh" : "",
        .claude = "Claude quota · unavailable from connected sources",
        .schedules = schedulesText(items) };
    const double seconds = platform::Seconds(now.time_since_epoch()).count();
    for (const json::Value& quota : quotas)
        addWindows(budget, quota, seconds);
    return budget;
}

} // namespace ostrel
