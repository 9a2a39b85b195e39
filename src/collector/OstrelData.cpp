// SPDX-License-Identifier: Apache-2.0
#include "collector/OstrelData.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <tuple>
#include <utility>

namespace ostrel {

namespace {

using json::Value;

/// A key and the field that it fills.
template <typename Record, typename T>
struct Field {
    const char* key;
    T Record::*field;
};

template <typename Record>
using TextField = Field<Record, std::string>;
template <typename Record>
using IntegerField = Field<Record, std::int64_t>;
template <typename Record>
using RealField = Field<Record, double>;

void take(std::string& into, const Value& object, const char* key)
{
    if (auto value = json::text(object, key))
        into = std::move(*value);
}

void take(std::int64_t& into, const Value& object, const char* key)
{
    if (const auto value = json::integer(object, key))
        into = *value;
}

void take(double& into, const Value& object, const char* key)
{
    if (const auto value = json::number(object, key))
        into = *value;
}

/// Fills the fields whose keys are there with the right type, and leaves the others as they are.
template <typename Record, typename T, std::size_t n>
void take(Record& record, const Value& object, const Field<Record, T> (&fields)[n])
{
    for (const auto& [key, field] : fields)
        take(record.*field, object, key);
}

/// The elements of the array under `key` that `parse` accepts, in their order.
template <typename Parse>
auto list(const Value& dictionary, const char* key, Parse parse)
{
    std::vector<typename decltype(parse(dictionary))::value_type> records;
    if (const Value* elements = json::array(dictionary, key))
        for (const Value& element : *elements)
            if (element.is_object())
                if (auto record = parse(element))
                    records.push_back(std::move(*record));
    return records;
}

void parseRAM(OstrelData::RAM& ram, const Value& object)
{
    using R = OstrelData::RAM;
    constexpr RealField<R> reals[] { { "total", &R::total }, { "used", &R::used }, { "wired", &R::wired },
        { "compressed", &R::compressed }, { "free", &R::free } };
    take(ram, object, reals);
    take(ram.usedPct, object, "used_pct");
}

void parseSwap(OstrelData::Swap& swap, const Value& object)
{
    using S = OstrelData::Swap;
    constexpr IntegerField<S> integers[] { { "total", &S::total }, { "used", &S::used }, { "free", &S::free },
        { "used_pct", &S::usedPct } };
    take(swap, object, integers);
    const auto inGB = [](std::int64_t mb) { return static_cast<double>(mb) / 1024; };
    swap.totalGB = inGB(swap.total);
    swap.usedGB = inGB(swap.used);
    swap.freeGB = inGB(swap.free);
    constexpr RealField<S> reals[] { { "total_gb", &S::totalGB }, { "used_gb", &S::usedGB },
        { "free_gb", &S::freeGB } };
    take(swap, object, reals);
    take(swap.meaning, object, "meaning");
}

void parseLoad(OstrelData::Load& load, const Value& object)
{
    using L = OstrelData::Load;
    constexpr RealField<L> reals[] { { "l1", &L::l1 }, { "l5", &L::l5 }, { "l15", &L::l15 } };
    take(load, object, reals);
    take(load.ncpu, object, "ncpu");
    take(load.pct, object, "pct");
}

/// The place of a family in the list; unknown ones stand behind.
std::size_t fanRank(std::string_view key)
{
    static constexpr std::array<std::string_view, 13> order { "mcp", "codex_mcp", "claude_mcp", "other_mcp",
        "codex_mcp_duplicates", "codex_node_repl", "browser", "Arc", "Chrome", "node", "python3", "qmd",
        "claude" };
    constexpr std::size_t unknown = 999;
    const auto at = std::ranges::find(order, key);
    return at == order.end() ? unknown : static_cast<std::size_t>(at - order.begin());
}

void parseFan(OstrelData& data, const Value& object)
{
    for (const auto& [key, value] : object.items())
        if (const auto count = json::asInteger(value))
            data.fan.push_back({ key, *count });
    std::ranges::sort(data.fan, {}, [](const OstrelData::FanEntry& entry) {
        return std::pair(fanRank(entry.key), std::string_view(entry.key));
    });
    if (const Value* bundles = json::object(object, "chromium_bundles"))
        for (const auto& [name, value] : bundles->items())
            if (const auto count = json::asInteger(value))
                data.chromiumBundles.push_back({ name, *count });
    std::ranges::sort(data.chromiumBundles,
        [](const auto& a, const auto& b) { return std::tie(b.count, a.name) < std::tie(a.count, b.name); });
}

std::optional<OstrelData::Proc> parseProc(const Value& object)
{
    const auto rss = json::integer(object, "rss");
    auto pid = json::text(object, "pid");
    auto name = json::text(object, "name");
    auto grp = json::text(object, "grp");
    if (!rss || !pid || !name || !grp)
        return std::nullopt;
    return OstrelData::Proc { .rss = *rss,
        .pid = std::move(*pid),
        .name = std::move(*name),
        .grp = std::move(*grp),
        .cmd = json::textOr(object, "cmd", ""),
        .cpu = json::numberOr(object, "cpu", 0) };
}

/// A value as it reads: a text without its quotes, everything else as JSON.
std::string printed(const Value* value)
{
    if (!value || value->is_null())
        return {};
    return value->is_string() ? value->get<std::string>() : json::dump(*value);
}

std::optional<OstrelData::Proc> parseLiveSession(const Value& object)
{
    return OstrelData::Proc { .rss = json::integerOr(object, "rss", 0),
        .pid = printed(json::member(object, "pid")),
        .name = json::textOr(object, "name", "agent"),
        .grp = "agent",
        .cmd = json::textOr(object, "cmd", ""),
        .cpu = json::numberOr(object, "cpu", 0) };
}

std::optional<OstrelData::Offender> parseOffender(const Value& object)
{
    using O = OstrelData::Offender;
    constexpr TextField<O> texts[] { { "label", &O::label }, { "source", &O::source }, { "risk", &O::risk },
        { "action", &O::action }, { "reason", &O::reason } };
    O offender;
    take(offender, object, texts);
    take(offender.cpu, object, "cpu");
    take(offender.rss, object, "rss");
    return offender.label.empty() ? std::nullopt : std::optional(std::move(offender));
}

void parseLaunchd(OstrelData::LaunchdAudit& audit, const Value& object)
{
    using A = OstrelData::LaunchdAudit;
    constexpr IntegerField<A> integers[] { { "interval_jobs", &A::intervalJobs },
        { "runatload_interval", &A::runAtLoadInterval }, { "keepalive", &A::keepAlive },
        { "shell_first", &A::shellFirst } };
    take(audit, object, integers);
}

std::optional<OstrelData::Service> parseService(const Value& object)
{
    using S = OstrelData::Service;
    constexpr TextField<S> texts[] { { "name", &S::name }, { "scope", &S::scope }, { "state", &S::state },
        { "url", &S::url }, { "path", &S::path }, { "launch_agent", &S::launchAgent }, { "note", &S::note } };
    constexpr IntegerField<S> integers[] { { "pid", &S::pid }, { "rss", &S::rss } };
    S service;
    take(service, object, texts);
    take(service, object, integers);
    take(service.cpu, object, "cpu");
    return service.name.empty() ? std::nullopt : std::optional(std::move(service));
}

void parseTrend(OstrelData::Trend& trend, const Value& object)
{
    using T = OstrelData::Trend;
    constexpr TextField<T> texts[] { { "summary", &T::summary }, { "direction", &T::direction } };
    constexpr IntegerField<T> integers[] { { "samples", &T::samples }, { "swap_delta", &T::swapDelta },
        { "load_delta", &T::loadDelta }, { "mcp_delta", &T::mcpDelta } };
    take(trend, object, texts);
    take(trend, object, integers);
}

void parseMeta(OstrelData::Meta& meta, const Value& object)
{
    using M = OstrelData::Meta;
    constexpr TextField<M> texts[] { { "backend", &M::backend }, { "code_path", &M::codePath },
        { "project_path", &M::projectPath }, { "native_app", &M::nativeApp },
        { "history_path", &M::historyPath }, { "server_url", &M::serverURL },
        { "data_endpoint", &M::dataEndpoint }, { "analyze_endpoint", &M::analyzeEndpoint },
        { "cleanup_endpoint", &M::cleanupEndpoint }, { "session_inspector_url", &M::sessionInspectorURL },
        { "native_refresh", &M::nativeRefresh }, { "panel_refresh", &M::panelRefresh },
        { "server_model", &M::serverModel }, { "service_model", &M::serviceModel } };
    take(meta, object, texts);
}

std::optional<OstrelData::HistorySample> parseHistorySample(const Value& object)
{
    OstrelData::HistorySample sample;
    using H = OstrelData::HistorySample;
    constexpr IntegerField<H> required[] { { "swap", &H::swap }, { "load", &H::load }, { "mcp", &H::mcp } };
    for (const auto& [key, field] : required) {
        const Value* value = json::member(object, key);
        const auto number = value ? json::asTruncated(*value) : std::nullopt;
        if (!number)
            return std::nullopt;
        sample.*field = *number;
    }
    take(sample.ts, object, "ts");
    return sample;
}

void parseGroups(OstrelData::Groups& groups, const Value& object)
{
    using G = OstrelData::Groups;
    constexpr IntegerField<G> integers[] { { "claude", &G::claude }, { "runtime", &G::runtime },
        { "app", &G::app } };
    take(groups, object, integers);
}

void parseVerdict(OstrelData::Verdict& verdict, const Value& object)
{
    using V = OstrelData::Verdict;
    constexpr TextField<V> texts[] { { "level", &V::level }, { "headline", &V::headline },
        { "cause", &V::cause } };
    take(verdict, object, texts);
    take(verdict.perSess, object, "per_sess");
}

} // namespace

OstrelData OstrelData::parse(const Value& dictionary)
{
    OstrelData data;
    const auto within = [&dictionary](const char* key, auto parse) {
        if (const Value* object = json::object(dictionary, key))
            parse(*object);
    };
    take(data.ts, dictionary, "ts");
    take(data.host, dictionary, "host");
    within("ram", [&](const Value& object) { parseRAM(data.ram, object); });
    within("swap", [&](const Value& object) { parseSwap(data.swap, object); });
    within("load", [&](const Value& object) { parseLoad(data.load, object); });
    within("fan", [&](const Value& object) { parseFan(data, object); });
    within("sessions", [&](const Value& object) {
        take(data.claudeSessions, object, "claude");
        take(data.codexSessions, object, "codex");
    });
    data.procs = list(dictionary, "procs", parseProc);
    data.liveSessions = list(dictionary, "live_sessions", parseLiveSession);
    data.offenders = list(dictionary, "offenders", parseOffender);
    within("launchd", [&](const Value& object) { parseLaunchd(data.launchd, object); });
    data.services = list(dictionary, "services", parseService);
    within("trend", [&](const Value& object) { parseTrend(data.trend, object); });
    within("meta", [&](const Value& object) { parseMeta(data.meta, object); });
    data.history = list(dictionary, "history", parseHistorySample);
    take(data.historyState, dictionary, "history_state");
    within("system_observation", [&](const Value& object) { data.systemObservation = object; });
    within("accuracy", [&](const Value& object) {
        for (const auto& [key, value] : object.items())
            if (auto text = json::asText(value))
                data.accuracy.emplace(key, std::move(*text));
    });
    within("groups", [&](const Value& object) { parseGroups(data.groups, object); });
    within("verdict", [&](const Value& object) { parseVerdict(data.verdict, object); });
    return data;
}

std::optional<std::string> OstrelData::source(std::string_view key) const
{
    const auto found = accuracy.find(key);
    return found == accuracy.end() ? std::nullopt : std::optional(found->second);
}

} // namespace ostrel
