// SPDX-License-Identifier: Apache-2.0
#include "panel/SessionsText.h"

#include "core/Text.h"
#include "panel/SourcedRow.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <string_view>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::size_t mostBundles = 8;

std::string processText(const OstrelData::Proc& proc)
{
    // Without a sign at zero.
    const double cpu = std::trunc(proc.cpu) + 0.0;
    return fmt::format("{} · pid {} · {} · {:.0f}% CPU", proc.name, proc.pid, memLabel(proc.rss), cpu);
}

std::string counterToolTip(const OstrelData& data, std::string_view key)
{
    const auto mentions = [&](std::string_view word) { return key.find(word) != std::string_view::npos; };
    auto source = data.source(key);
    if (!source)
        source = data.source(mentions("mcp") ? "mcp" : mentions("chromium") ? "chromium" : "processes");
    return source.value_or("no method published for this counter");
}

std::string bundlesText(const std::vector<OstrelData::BundleEntry>& bundles)
{
    if (bundles.empty())
        return {};
    std::vector<std::string> named;
    for (std::size_t at = 0; at < std::min(bundles.size(), mostBundles); ++at)
        named.push_back(fmt::format("{} {}", bundles[at].name, bundles[at].count));
    return "chromium helpers by bundle: " + joined(named, " · ");
}

} // namespace

std::size_t LiveProcesses::pages(std::size_t processes)
{
    return std::max<std::size_t>(1, (processes + pageSize - 1) / pageSize);
}

LiveProcesses liveProcesses(const OstrelData& data, std::size_t page)
{
    LiveProcesses live {
        .title = fmt::format("live CLI processes · {} · sorted by RAM", data.liveSessions.size()),
        .note = "Terminal tabs and operating-system processes are separate observations. Session stopping is "
                "protected by your current policy.",
        .nothing = data.liveSessions.empty() ? "No live CLI processes in this snapshot." : "",
        .rows = {},
        .pager = {},
    };
    auto sorted = data.liveSessions;
    std::ranges::stable_sort(sorted, std::greater(), &OstrelData::Proc::rss);
    const std::size_t first = page * LiveProcesses::pageSize;
    for (std::size_t at = first; at < std::min(sorted.size(), first + LiveProcesses::pageSize); ++at)
        live.rows.push_back({ processText(sorted[at]), sorted[at] });
    const std::size_t pages = LiveProcesses::pages(sorted.size());
    if (pages > 1)
        live.pager = Pager { .text = fmt::format("page {} / {}", page + 1, pages),
            .previous = page > 0,
            .next = page + 1 < pages };
    return live;
}

std::optional<ProcessCounters> processCounters(const OstrelData& data, const std::optional<std::string>& age)
{
    if (data.fan.empty())
        return std::nullopt;
    ProcessCounters counters {
        .title = fmt::format("process counters · one collector snapshot · {}", snapshotAgeOr(age)),
        .rows = {},
        .bundles = bundlesText(data.chromiumBundles),
        .perSession = fmt::format("≈ {:.1f} mcp / session", data.verdict.perSess),
    };
    for (const OstrelData::FanEntry& entry : data.fan)
        counters.rows.push_back(
            { entry.key, fmt::format("{}", entry.count), counterToolTip(data, entry.key) });
    return counters;
}

LaunchdBox launchdBox(const OstrelData::LaunchdAudit& audit)
{
    return { .counts = fmt::format("interval {} · RunAtLoad storm {} · keepAlive {}", audit.intervalJobs,
                 audit.runAtLoadInterval, audit.keepAlive),
        .alarming = audit.runAtLoadInterval > 0,
        .labels
        = fmt::format("background labels: {} shell-first items still display as bash/zsh/env in macOS "
                      "Settings until their plist is migrated/reloaded.",
            audit.shellFirst) };
}

platform::Alert detailsAlert(const OstrelData::Proc& proc)
{
    return { .title = fmt::format("{} · pid {}", proc.name, proc.pid),
        .text = fmt::format("{} RSS · {}% CPU\n\n{}\n\nTo continue: open the matching named terminal above.",
            memLabel(proc.rss), proc.cpu, proc.cmd),
        .buttons = { "Done", "Copy details" },
        .cancel = 0 };
}

} // namespace ostrel
