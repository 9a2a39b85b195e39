// SPDX-License-Identifier: Apache-2.0
#include "panel/SystemText.h"

#include "core/Text.h"
#include "panel/GaugeRules.h"
#include "panel/LiveText.h"
#include "panel/ReadoutText.h"
#include "readings/NativeTick.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

using namespace SystemItem;
using Value = std::optional<std::string>;
using Rows = std::vector<SystemRow>;

constexpr std::int64_t fewFreeMB = 500;
constexpr std::int64_t littleFreeMB = 1500;
constexpr std::size_t mostLinks = 4;
constexpr std::size_t mostBundles = 3;
constexpr double secondsPerHour = 3600;
constexpr double mbPerGB = 1024;
constexpr int afterRow = 7;

constexpr std::string_view unavailable = "unavailable";

std::string thermalWord(const std::optional<platform::ThermalState>& state)
{
    static constexpr std::array<std::string_view, 4> words { "normal", "fair", "serious", "critical" };
    const auto at = state ? static_cast<std::size_t>(*state) : words.size();
    return std::string(at < words.size() ? words[at] : "unknown");
}

std::string lowPowerWord(const std::optional<bool>& on)
{
    if (!on)
        return std::string(unavailable);
    return *on ? "on" : "off";
}

std::string diskValue(const json::Value& observation)
{
    const json::Value* disk = json::object(observation, "disk");
    const auto free = disk ? json::number(*disk, "free_gb") : std::nullopt;
    const auto total = disk ? json::number(*disk, "total_gb") : std::nullopt;
    if (!free || !total)
        return std::string(unavailable);
    return fmt::format("{:.1f} GB free / {:.1f} GB", *free, *total);
}

std::string batteryValue(const json::Value& observation)
{
    const json::Value* battery = json::object(observation, "battery");
    const auto percent = battery ? json::integer(*battery, "percent") : std::nullopt;
    if (!percent)
        return std::string(unavailable);
    return fmt::format(
        "{}% · {} · {}", *percent, json::textOr(*battery, "power", ""), json::textOr(*battery, "detail", ""));
}

void addMachine(Rows& rows, const MachineFacts& machine)
{
    rows.emplace_back(kvSourced("macOS", machine.system, "ProcessInfo", "native"));
    rows.emplace_back(kvSourced("uptime", fmt::format("{:.1f} hours", machine.uptime / secondsPerHour),
        "ProcessInfo.systemUptime", "native"));
    rows.emplace_back(
        kvSourced("thermal pressure", thermalWord(machine.thermal), "ProcessInfo.thermalState", "native"));
    rows.emplace_back(kvSourced(
        "low power mode", lowPowerWord(machine.lowPower), "ProcessInfo.isLowPowerModeEnabled", "native"));
}

void addNetwork(Rows& rows, const json::Value& observation, std::string_view age)
{
    std::size_t shown = 0;
    if (const json::Value* links = json::array(observation, "network"))
        for (const json::Value& link : *links) {
            if (!link.is_object() || shown == mostLinks)
                continue;
            ++shown;
            const auto gigabytes = [&link](std::string_view key) {
                return json::numberOr(link, key, 0) / NativeStats::bytesPerGB;
            };
            rows.emplace_back(kvSourced(json::textOr(link, "interface", "interface"),
                fmt::format("{:.1f} GB received · {:.1f} GB sent", gigabytes("received"), gigabytes("sent")),
                "netstat link bytes · cumulative since interface reset", age));
        }
    if (shown == 0)
        rows.emplace_back(
            kvSourced("network counters", std::string(unavailable), "netstat link counters", "not read"));
}

void addObservation(Rows& rows, const SystemFacts& facts, const json::Value& observation)
{
    const std::string age = snapshotAgeOr(facts.snapshotAge, "not read");
    rows.emplace_back(kvSourced("Data volume", diskValue(observation), "statvfs /System/Volumes/Data", age));
    rows.emplace_back(kvSourced("battery", batteryValue(observation), "pmset -g batt", age));
    addNetwork(rows, observation, age);
}

std::string loadValue(const NativeStats& native)
{
    const auto cores = static_cast<double>(std::max<std::int64_t>(1, native.ncpu));
    return fmt::format("{:.2f} · {}% of {} cores", native.load1,
        rounded(std::trunc(native.load1 / cores * 100)), native.ncpu);
}

Value pressureValue(int level)
{
    const std::string_view name = pressureName(level);
    return name == "?" ? Value() : Value(std::string(name));
}

void addNative(Rows& rows, const SystemFacts& facts)
{
    const NativeStats& native = facts.native;
    const std::string age = nativeAge(facts.nativeInterval);
    const std::string memory(memorySource);
    rows.emplace_back(Pair { "load (1m)", loadValue(native) });
    rows.emplace_back(Gap { 2 });
    rows.emplace_back(sourceLine(std::string(loadSource), age));
    rows.emplace_back(Gap { afterRow });
    rows.emplace_back(kvSourced("memory pressure", pressureValue(native.pressureLevel),
        "sysctl kern.memorystatus_vm_pressure_level", age));
    const std::string_view level = freeLevel(native.freeMB);
    const std::string_view mark = GaugeRules::levelMark(level, facts.differentiateWithoutColor);
    rows.emplace_back(Free { std::string(mark) + LiveText::free(native), level });
    rows.emplace_back(sourceLine(memory, age));
    rows.emplace_back(Gap { afterRow });
    rows.emplace_back(kvSourced("memory used",
        fmt::format("{:.1f} gb of {:.0f} gb · {}%", native.usedGB(), native.totalGB(), native.memPct()),
        memory, age));
    rows.emplace_back(kvSourced("swap used",
        fmt::format("{:.2f}/{:.1f} gb · {}/{} mb", static_cast<double>(native.swapUsedMB) / mbPerGB,
            static_cast<double>(native.swapTotalMB) / mbPerGB, native.swapUsedMB, native.swapTotalMB),
        std::string(swapSource), age));
}

Value chromiumValue(const OstrelData& data)
{
    const auto helpers = fanCount(data, "chromium");
    if (!helpers)
        return std::nullopt;
    std::vector<std::string> pieces { fmt::format("{}", *helpers) };
    for (std::size_t at = 0; at < std::min(mostBundles, data.chromiumBundles.size()); ++at)
        pieces.push_back(fmt::format("{} {}", data.chromiumBundles[at].name, data.chromiumBundles[at].count));
    return joined(pieces, " · ");
}

Value duplicatesValue(const OstrelData& data)
{
    const auto groups = fanCount(data, "codex_mcp_duplicates");
    if (!groups)
        return std::nullopt;
    const std::int64_t mb = fanCount(data, "codex_mcp_duplicate_mb").value_or(0);
    return mb >= 1 ? fmt::format("{} · {}", *groups, memLabel(mb)) : fmt::format("{}", *groups);
}

std::string barPartsText(const BarParts& parts)
{
    std::vector<std::string> labels;
    for (const BarPart part : allBarParts)
        if (parts.contains(rawValue(part)))
            labels.emplace_back(rawValue(part));
    return labels.empty() ? "swap" : joined(labels, " · ");
}

void addSnapshot(Rows& rows, const SystemFacts& facts, const OstrelData& data)
{
    const std::string age = snapshotAgeOr(facts.snapshotAge);
    rows.emplace_back(kvSourced("chromium helpers", chromiumValue(data), data.source("chromium"), age));
    rows.emplace_back(
        kvSourced("codex mcp duplicates", duplicatesValue(data), data.source("duplicates"), age));
    rows.emplace_back(
        Pair { "menu bar", fmt::format("{} · {}", barPartsText(facts.barParts), facts.barTitle) });
    rows.emplace_back(Pair {
        "full data source", fmt::format("{} · {} · {}", facts.backendSource, facts.backendState, age) });
}

void addSavedHistory(Rows& rows, const SystemFacts& facts, const OstrelData& data)
{
    const bool stale = facts.snapshotStale && data.historyState == "recorded";
    const std::string state = stale ? "stale" : data.historyState;
    rows.emplace_back(Section { "saved history · local" });
    rows.emplace_back(Pair { state, fmt::format("{} valid samples", data.history.size()) });
    if (!data.history.empty()) {
        const OstrelData::HistorySample& last = data.history.back();
        rows.emplace_back(Pair { "latest record", last.ts });
        rows.emplace_back(Pair {
            "recorded swap / load / MCP", fmt::format("{}% / {}% / {}", last.swap, last.load, last.mcp) });
    }
    rows.emplace_back(Note { state == unavailable
            ? "Collector history could not be saved or read. Refresh to retry; current readings remain "
              "separate."
            : "Collector history is saved when detailed snapshots run." });
}

void addMinuteHistory(Rows& rows, const SystemFacts& facts, const OstrelHistory& history)
{
    const std::int64_t span = history.spanMinutes();
    rows.emplace_back(Section { "dashboard history · local · 24 h" });
    rows.emplace_back(Pair {
        "minute points kept", fmt::format("{} of {}", history.points.size(), OstrelHistory::capacity) });
    rows.emplace_back(Pair {
        "restored at launch · this run", fmt::format("{} · {}", history.restored, history.liveCount()) });
    rows.emplace_back(Pair { "covered span",
        span > 0 ? fmt::format("{} min, gaps included", span) : "recording the first minute" });
    rows.emplace_back(sourceLine(fmt::format("native readings once a minute, {}", facts.historyFilePath),
        "written whether or not the panel is open"));
}

Model measurementModel(const SystemFacts& facts)
{
    return { "MEASUREMENT MODEL",
        fmt::format("menu bar is native: sysctl/vm.swapusage + host_cpu every {:.1f}s. Detailed panel "
                    "snapshots use one short-lived local CLI process every {:.1f}s while open.",
            facts.nativeInterval.count(), facts.panelInterval.count()),
        fmt::format("swap is memory stored on disk, distinct from app RSS. load can exceed 100% because it "
                    "is runnable work divided by {} CPU cores.",
            facts.native.ncpu) };
}

} // namespace

std::string_view freeLevel(std::int64_t freeMB)
{
    return gaugeLevel(freeMB < littleFreeMB, freeMB < fewFreeMB);
}

std::vector<SystemRow> systemText(
    const SystemFacts& facts, const OstrelData& data, const OstrelHistory& history)
{
    Rows rows;
    rows.emplace_back(Section { "this Mac · power, storage & network" });
    addMachine(rows, facts.machine);
    addObservation(rows, facts, data.systemObservation);
    rows.emplace_back(Gap { 16 });
    rows.emplace_back(Section { fmt::format("cpu load · {} samples at {}s · this run", facts.samples,
        rounded(std::trunc(facts.nativeInterval.count()))) });
    rows.emplace_back(Gap { 2 });
    rows.emplace_back(Sparkline { "cpu load" });
    rows.emplace_back(sourceLine("host_cpu tick delta, native", "live"));
    rows.emplace_back(Gap { 14 });
    rows.emplace_back(Gauges {});
    rows.emplace_back(Gap { 12 });
    rows.emplace_back(Section { "system · every row names its source" });
    addNative(rows, facts);
    addSnapshot(rows, facts, data);
    rows.emplace_back(Gap { 12 });
    addSavedHistory(rows, facts, data);
    rows.emplace_back(Gap { 8 });
    addMinuteHistory(rows, facts, history);
    rows.emplace_back(Gap { 12 });
    rows.emplace_back(measurementModel(facts));
    rows.emplace_back(Gap { 12 });
    return rows;
}

} // namespace ostrel
