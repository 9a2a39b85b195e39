// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsText.h"

#include "core/Text.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::string_view noValue = "—";
constexpr std::size_t longestTime = 28;
constexpr std::size_t clockSigns = 5;
/// Signs that any label, tooltip or question of the panel has room for.
constexpr std::size_t longestShown = 600;

std::string orNone(std::string_view text) { return text.empty() ? std::string(noValue) : shownText(text); }

std::string timeOrNone(std::string_view text) { return shownText(shortTime(text)); }

LaneChip allLanes(const AutomationsSnapshot& snapshot, const AutomationsFilter& filter)
{
    return { .lane = "",
        .button = { .title = fmt::format("all · {}", snapshot.total),
            .width = 104,
            .active = filter.lane.empty(),
            .identifier = "lane-" } };
}

LaneChip laneChip(const AutomationLane& lane, const AutomationsFilter& filter)
{
    const bool counted = lane.observed || lane.count > 0;
    const std::string tip = lane.observed ? fmt::format("{} · {}", lane.owner, lane.registry) : lane.note;
    return { .lane = lane.key,
        .button = { .title
            = shownText(fmt::format("{} · {}", lane.title, counted ? fmt::to_string(lane.count) : "–")),
            .width = 132,
            .active = filter.lane == lane.key,
            .toolTip = shownText(tip),
            .identifier = "lane-" + lane.key } };
}

std::vector<LaneChip> laneChips(const AutomationsSnapshot& snapshot, const AutomationsFilter& filter)
{
    std::vector<LaneChip> chips { allLanes(snapshot, filter) };
    for (const AutomationLane& lane : snapshot.lanes) {
        if (chips.size() > AutomationsBody::mostLanes)
            break;
        if (lane.count > 0 || !lane.observed)
            chips.push_back(laneChip(lane, filter));
    }
    return chips;
}

std::vector<StateChip> stateChips(const AutomationsFilter& filter)
{
    std::vector<StateChip> chips;
    for (const auto state : { AutomationStateFilter::all, AutomationStateFilter::enabled,
             AutomationStateFilter::attention, AutomationStateFilter::unverified }) {
        const std::string word(rawValue(state));
        chips.push_back({ .filter = state,
            .button = { .title = word,
                .width = 98,
                .active = filter.state == state,
                .identifier = "state-" + word } });
    }
    return chips;
}

std::vector<std::string> runLines(const AutomationsFacts& facts, const std::string& key)
{
    std::vector<std::string> lines;
    if (const auto journal = facts.journals.find(key); journal != facts.journals.end())
        for (const AutomationRun& run : journal->second) {
            if (lines.size() == AutomationCard::mostRuns)
                break;
            std::vector<std::string> pieces;
            if (!run.at.empty())
                pieces.push_back(shortTime(run.at));
            if (!run.status.empty())
                pieces.push_back(run.status);
            pieces.push_back(run.line);
            lines.push_back(shownText(joined(pieces, " · ")));
        }
    if (lines.empty())
        lines.emplace_back("no run details returned yet");
    return lines;
}

AutomationCard::Action cardAction(
    const Automation& item, const char* op, const char* title, int width, const char* place, bool busy)
{
    return { .op = op,
        .button = { .title = title,
            .width = width,
            .enabled = !busy,
            .identifier = fmt::format("automation-{}-{}", place, item.key()) } };
}

AutomationCard cardOf(const Automation& item, const AutomationsFacts& facts)
{
    AutomationCard card { .lines = { {
                              { "scheduler", shownText(fmt::format("{} · {}", item.laneTitle, item.host)) },
                              { "schedule", shownText(item.schedule) },
                              { "last run", timeOrNone(item.lastRun) },
                              { "result", orNone(item.lastResult) },
                              { "next run", timeOrNone(item.nextRun) },
                              { "observation", shownText(item.observation) },
                              { "registry state", shownText(item.registryState) },
                              { "location", shownText(item.location) },
                              { "transfer", shownText(item.migration) },
                              { "owner", shownText(item.owner) },
                              { "registry", shownText(item.registry) },
                              { "runs as", orNone(item.executor) },
                          } },
        .runs = runLines(facts, item.key()),
        .run = {},
        .toggle = {},
        .plan = {},
        .receipts = { .title = "receipts",
            .width = 96,
            .toolTip = "open the folder of the receipts",
            .identifier = fmt::format("automation-receipts-{}", item.key()) } };
    if (item.canRun)
        card.run = cardAction(item, "run", "run once", 96, "run", facts.busy);
    if (item.toggles) {
        const char* op = item.active ? "disable" : "enable";
        card.toggle = cardAction(item, op, op, 96, "toggle", facts.busy);
    }
    if (item.lane != "registry")
        card.plan = cardAction(item, "plan", "transfer plan", 120, "plan", facts.busy);
    return card;
}

AutomationRow rowOf(const Automation& item, const AutomationsState& state, const AutomationsFacts& facts)
{
    const bool open = state.expanded.contains(item.key());
    AutomationRow row { .item = item,
        .heading = "",
        .title = shownText(item.title),
        .detail = shownText(fmt::format("{} · {}", item.host, item.schedule)),
        .word = item.unverified() ? "unverified" : shownText(verdict(item)),
        .failed = item.voxelState() == AutomationVoxelState::failed,
        .open = { .title = open ? "hide" : "open",
            .width = 64,
            .identifier = fmt::format("automation-open-{}", item.key()) },
        .accessibilityLabel = shownText(fmt::format("{}, {}, {}", item.title, item.laneTitle, item.state)),
        .card = {} };
    if (open)
        row.card = cardOf(item, facts);
    return row;
}

std::string nothingText(const AutomationsSnapshot& snapshot, const std::string& lane)
{
    const auto named = std::ranges::find(snapshot.lanes, lane, &AutomationLane::key);
    if (!lane.empty() && named != snapshot.lanes.end() && !named->note.empty())
        return shownText(named->note);
    return "this scheduler holds nothing right now";
}

void addHeader(AutomationsBody& body, const AutomationsFacts& facts)
{
    const AutomationsSnapshot& snapshot = facts.snapshot;
    body.title = facts.busy ? "rebuilding the inventory…"
                            : fmt::format("{} entries · {} enabled", snapshot.total, snapshot.active);
    body.readLine = fmt::format("{} · collected {}",
        snapshot.readAt.empty() ? "inventory not read yet" : "read " + timeOrNone(snapshot.readAt),
        timeOrNone(snapshot.generatedAt));
    body.refresh = { .title = "refresh inventory",
        .width = 150,
        .enabled = !facts.busy,
        .toolTip = "ask every scheduler again; up to a few minutes",
        .identifier = "automations-refresh" };
}

void addRows(AutomationsBody& body, const AutomationsState& state, const AutomationsFacts& facts)
{
    const AutomationsSnapshot& snapshot = facts.snapshot;
    const auto found = matches(snapshot.items, facts.index, state.filter);
    const AutomationsPage page = pageOf(found.size(), state.page);
    body.page = page.page;
    body.pageLabel = fmt::format("{} matches · page {}/{}", found.size(), page.page + 1, page.pages);
    if (found.empty())
        body.nothing = nothingText(snapshot, state.filter.lane);
    const std::string* heading = nullptr;
    for (std::size_t at = page.first; at < page.first + page.shown; ++at) {
        const Automation& item = snapshot.items[found[at]];
        AutomationRow row = rowOf(item, state, facts);
        if (!heading || *heading != item.laneTitle)
            row.heading = shownText(item.laneTitle);
        heading = &item.laneTitle;
        body.rows.push_back(std::move(row));
    }
    body.previous = {
        .title = "previous", .width = 96, .enabled = page.page > 0, .identifier = "automations-previous"
    };
    body.next = { .title = "next", .width = 96, .enabled = page.hasNext(), .identifier = "automations-next" };
}

/// What the action comes to, for whoever confirms it.
std::string_view sentence(std::string_view op)
{
    if (op == "plan")
        return "Save a local transfer checklist. No scheduler or session is changed.";
    if (op == "run")
        return "Request one run; this can consume the owning provider quota. Verify its journal afterwards.";
    if (op == "disable")
        return "Pause future scheduled runs. Existing sessions stay open.";
    return "Resume this schedule after its registry and quota checks.";
}

std::string_view lastPathComponent(std::string_view path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    return path.substr(path.rfind('/') + 1);
}

} // namespace

std::string shortTime(std::string_view text)
{
    if (text.empty())
        return std::string(noValue);
    const auto split = text.find('T');
    if (split == std::string_view::npos)
        return std::string(firstSigns(text, longestTime));
    return fmt::format("{} {}", text.substr(0, split), firstSigns(text.substr(split + 1), clockSigns));
}

std::string verdict(const Automation& item)
{
    return item.lastResult.empty() || item.lastResult == "unobserved" ? item.state : item.lastResult;
}

std::string shownText(std::string_view text)
{
    const std::string_view shown = firstSigns(text, longestShown);
    std::string line(shown);
    for (char& sign : line)
        if (static_cast<unsigned char>(sign) < ' ' || sign == '\x7f')
            sign = ' ';
    return shown.size() < text.size() ? line + "…" : line;
}

AutomationsBody automationsBody(const AutomationsState& state, const AutomationsFacts& facts)
{
    const AutomationsSnapshot& snapshot = facts.snapshot;
    AutomationsBody body;
    addHeader(body, facts);
    body.lanes = laneChips(snapshot, state.filter);
    body.states = stateChips(state.filter);
    body.query = state.filter.query;
    if (!snapshot.error.empty())
        body.error = shownText("inventory: " + snapshot.error);
    body.lastAction = shownText(state.lastAction);
    for (const std::string& alert : snapshot.alerts) {
        if (body.alerts.size() == AutomationsBody::mostAlerts)
            break;
        body.alerts.push_back(shownText("△ " + alert));
    }
    addRows(body, state, facts);
    return body;
}

platform::Alert confirmAlert(const std::string& op, const Automation& item)
{
    return { .title = shownText(fmt::format("{} · {}", op, item.title)),
        .text = fmt::format("scheduler {} · {}\nschedule {}\n\n{}\nthe action writes a receipt into "
                            "Ostrel/receipts",
            shownText(item.laneTitle), shownText(item.host), shownText(item.schedule), sentence(op)),
        .buttons = { op, "cancel" } };
}

std::string outcomeText(const AutomationActionResult& result)
{
    const std::string receipt = result.receipt.empty()
        ? std::string()
        : fmt::format(" · receipt {}", lastPathComponent(result.receipt));
    return fmt::format("{}{}{}", result.ok ? "✓ " : "✗ ", result.message, receipt);
}

AutomationsSection automationsSection(const AutomationsSnapshot& snapshot)
{
    AutomationsSection section { .title = "automations",
        .notes = { "the six schedulers are read on a press of refresh; the tab keeps no timer",
            "enable and disable go through a confirmation and leave a receipt" },
        .lanes = {},
        .receipts = { .title = "open receipts",
            .width = 140,
            .toolTip = "open the folder of the receipts",
            .identifier = "automations-receipts" } };
    for (const AutomationLane& lane : snapshot.lanes) {
        if (section.lanes.size() == AutomationsBody::mostLanes)
            break;
        section.lanes.push_back({ .text
            = shownText(lane.observed ? fmt::format("{} — {} · {}", lane.title, lane.count, lane.owner)
                                      : fmt::format("{} — not reachable · {}", lane.title, lane.note)),
            .observed = lane.observed });
    }
    return section;
}

} // namespace ostrel
