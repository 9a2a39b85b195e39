// SPDX-License-Identifier: Apache-2.0
#include "collector/OstrelData.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using json::Value;
using Pointer = Value::json_pointer;

/// A snapshot in which every key holds something else than its default, and no two the same.
constexpr const char* fullText = R"({
 "ts": "12:34:56", "host": "mac",
 "ram": {"total": 64.5, "used": 40.25, "used_pct": 62, "wired": 5.5, "compressed": 3.5, "free": 1.5},
 "swap": {"total": 8192, "used": 2048, "free": 6144, "used_pct": 25, "total_gb": 8.1, "used_gb": 2.1,
          "free_gb": 6.1, "meaning": "fine"},
 "load": {"l1": 1.25, "l5": 2.25, "l15": 3.25, "ncpu": 10, "pct": 13},
 "fan": {"mcp": 41, "node": 42, "chromium_bundles": {"Arc": 7}},
 "sessions": {"claude": 3, "codex": 4},
 "procs": [{"rss": 900, "pid": "102", "name": "node", "grp": "runtime", "cmd": "node x", "cpu": 12.5}],
 "live_sessions": [{"rss": 901, "pid": 103, "name": "claude", "cmd": "claude -p", "cpu": 13.5}],
 "offenders": [{"label": "big", "cpu": 90.5, "rss": 902, "source": "s", "risk": "r", "action": "a",
                "reason": "why"}],
 "launchd": {"interval_jobs": 11, "runatload_interval": 12, "keepalive": 13, "shell_first": 14},
 "services": [{"name": "db", "scope": "user", "state": "up", "url": "u", "pid": 104, "rss": 903, "cpu": 0.5,
               "path": "/p", "launch_agent": "la", "note": "n"}],
 "trend": {"samples": 5, "summary": "rising", "direction": "up", "swap_delta": -6, "load_delta": 7,
           "mcp_delta": 8},
 "meta": {"backend": "m1", "code_path": "m2", "project_path": "m3", "native_app": "m4", "history_path": "m5",
          "server_url": "m6", "data_endpoint": "m7", "analyze_endpoint": "m8", "cleanup_endpoint": "m9",
          "session_inspector_url": "m10", "native_refresh": "m11", "panel_refresh": "m12",
          "server_model": "m13", "service_model": "m14"},
 "history": [{"swap": 21, "load": 22, "mcp": 23, "ts": "then"}],
 "history_state": "recorded",
 "system_observation": {"disk": {"free_gb": 1}, "more": [1, {"a": null}]},
 "accuracy": {"mcp": "ps"},
 "groups": {"claude": 31, "runtime": 32, "app": 33},
 "verdict": {"level": "warn", "headline": "h", "cause": "c", "per_sess": 5.75}
})";

OstrelData fullData()
{
    OstrelData d;
    d.ts = "12:34:56";
    d.host = "mac";
    d.ram = { 64.5, 40.25, 62, 5.5, 3.5, 1.5 };
    d.swap = { 8192, 2048, 6144, 25, 8.1, 2.1, 6.1, "fine" };
    d.load = { 1.25, 2.25, 3.25, 10, 13 };
    d.fan = { { "mcp", 41 }, { "node", 42 } };
    d.chromiumBundles = { { "Arc", 7 } };
    d.claudeSessions = 3;
    d.codexSessions = 4;
    d.procs = { { 900, "102", "node", "runtime", "node x", 12.5 } };
    d.liveSessions = { { 901, "103", "claude", "agent", "claude -p", 13.5 } };
    d.offenders = { { "big", 90.5, 902, "s", "r", "a", "why" } };
    d.launchd = { 11, 12, 13, 14 };
    d.services = { { "db", "user", "up", "u", 104, 903, 0.5, "/p", "la", "n" } };
    d.trend = { 5, "rising", "up", -6, 7, 8 };
    d.meta = { "m1", "m2", "m3", "m4", "m5", "m6", "m7", "m8", "m9", "m10", "m11", "m12", "m13", "m14" };
    d.history = { { 21, 22, 23, "then" } };
    d.historyState = "recorded";
    d.systemObservation = { { "disk", { { "free_gb", 1 } } }, { "more", { 1, { { "a", nullptr } } } } };
    d.accuracy = { { "mcp", "ps" } };
    d.groups = { 31, 32, 33 };
    d.verdict = { "warn", "h", "c", 5.75 };
    return d;
}

OstrelData parsed(const std::string& text) { return OstrelData::parse(json::parse(text).value()); }

TEST(OstrelData, AnEmptyObjectGivesTheDefaults)
{
    for (const char* text : { "{}", "[]", "7", "null", "\"x\"" })
        EXPECT_EQ(parsed(text), OstrelData()) << text;
    const OstrelData data;
    EXPECT_EQ(
        data.trend.summary + "|" + data.trend.direction + "|" + data.verdict.level + "|" + data.historyState,
        "history warming up|flat|ok|unavailable");
    EXPECT_EQ(data.systemObservation, Value::object());
}

TEST(OstrelData, EveryKeyFillsItsOwnFieldAndUnknownOnesNone)
{
    EXPECT_EQ(parsed(fullText), fullData());
    Value more = json::parse(fullText).value();
    for (const char* place : { "/x", "/ram/x", "/swap/x", "/procs/0/x", "/meta/x", "/verdict/x" })
        more[Pointer(place)] = "unknown";
    EXPECT_EQ(OstrelData::parse(more), fullData());
}

/// All keys of a document, as places, in which an element of an array stands for all its like.
std::vector<Pointer> places(const Value& value, const Pointer& at = Pointer())
{
    std::vector<Pointer> found;
    for (const auto& [key, inner] : value.items()) {
        const Pointer place = value.is_array() ? at / std::stoul(key) : at / key;
        if (!value.is_array())
            found.push_back(place);
        // What is kept whole has no keys of its own, and neither has a map from free names.
        if (key != "system_observation" && inner.is_structured())
            for (const Pointer& deeper : places(inner, place))
                found.push_back(deeper);
    }
    return found;
}

TEST(OstrelData, AValueOfAnotherTypeCountsAsAnAbsentKeyEverywhere)
{
    const Value full = json::parse(fullText).value();
    const Value wrongs[] { nullptr, true, "text", "7", 7, -7, 7.5, 1e300, UINT64_MAX, Value::object(),
        Value::array(), { { "a", "b" } }, { 1, "a" } };
    const auto sameKind = [](const Value& wrong, const Value& right) {
        if (right.is_number_integer())
            return json::asInteger(wrong).has_value();
        return right.is_number() ? wrong.is_number() : wrong.type() == right.type();
    };
    const auto all = places(full);
    EXPECT_GT(all.size(), 100U);
    for (const Pointer& place : all) {
        Value without = full;
        without[place.parent_pointer()].erase(place.back());
        const OstrelData expected = OstrelData::parse(without);
        EXPECT_NE(expected, fullData()) << place << " is read";
        const bool anyKind = place.to_string() == "/live_sessions/0/pid";
        // These accept an integer or a number that is cut.
        const bool cut = place.parent_pointer().to_string() == "/history/0" && place.back() != "ts";
        // As a number it is a family like any other.
        const bool bundles = place.to_string() == "/fan/chromium_bundles";
        for (const Value& wrong : wrongs) {
            if (anyKind || sameKind(wrong, full[place]) || ((cut || bundles) && json::asTruncated(wrong)))
                continue;
            Value document = full;
            document[place] = wrong;
            EXPECT_EQ(OstrelData::parse(document), expected) << place << " as " << wrong;
        }
        // A whole number is one however it is written.
        if (full[place].is_number_integer() && !anyKind) {
            Value document = full;
            document[place] = full[place].get<double>();
            EXPECT_EQ(OstrelData::parse(document), fullData()) << place;
        }
    }
}

TEST(OstrelData, SwapInGigabytesFollowsFromMegabytesUnlessItIsTold)
{
    const std::tuple<const char*, double, double, double> cases[] { { R"({"total":2048})", 2, 0, 0 },
        { R"({"total_gb":3.5,"total":2048})", 3.5, 0, 0 },
        { R"({"total":2048,"total_gb":"3.5","used":512,"free":1536})", 2, 0.5, 1.5 },
        { R"({"used":512,"used_gb":0})", 0, 0, 0 }, { R"({"total":2048.5})", 0, 0, 0 } };
    for (const auto& [text, total, used, free] : cases) {
        const auto swap = parsed(R"({"swap":)" + std::string(text) + "}").swap;
        EXPECT_EQ(std::tuple(swap.totalGB, swap.usedGB, swap.freeGB), std::tuple(total, used, free)) << text;
    }
}

TEST(OstrelData, FamiliesStandInTheirOrderThenTheUnknownByNameAndBundlesByCount)
{
    const std::pair<const char*, const char*> cases[] {
        { R"({"claude":1,"qmd":2,"python3":3,"node":4,"Chrome":5,"Arc":6,"browser":7,"codex_node_repl":8,
              "codex_mcp_duplicates":9,"other_mcp":10,"claude_mcp":11,"codex_mcp":12,"mcp":13,"a":14,
              "chromium":15,"Z":16,"":17})",
            "mcp=13 codex_mcp=12 claude_mcp=11 other_mcp=10 codex_mcp_duplicates=9 codex_node_repl=8 "
            "browser=7 "
            "Arc=6 Chrome=5 node=4 python3=3 qmd=2 claude=1 =17 Z=16 a=14 chromium=15 |" },
        { R"({"a":1.0,"b":1.5,"c":"1","d":null,"e":[1],"chromium_bundles":{"a":1,"b":3,"c":3,"d":2.5,"e":"9",
              "f":-1}})",
            "a=1 |b=3 c=3 a=1 f=-1 " },
        { R"({"chromium_bundles":5})", "chromium_bundles=5 |" }
    };
    for (const auto& [text, expected] : cases) {
        const OstrelData data = parsed(R"({"fan":)" + std::string(text) + "}");
        std::string order;
        for (const auto& [key, count] : data.fan)
            order += fmt::format("{}={} ", key, count);
        order += "|";
        for (const auto& [name, count] : data.chromiumBundles)
            order += fmt::format("{}={} ", name, count);
        EXPECT_EQ(order, expected);
    }
}

TEST(OstrelData, ElementsWithoutWhatTheyNeedAreDroppedAndTheOthersKeepTheirOrder)
{
    const auto kept = [](const OstrelData& data) {
        std::string names;
        for (const auto& proc : data.procs)
            names += "p" + proc.pid;
        for (const auto& session : data.liveSessions)
            names += "l" + session.name + session.pid + session.grp;
        for (const auto& offender : data.offenders)
            names += "o" + offender.label;
        for (const auto& service : data.services)
            names += "s" + service.name;
        for (const auto& sample : data.history)
            names += fmt::format("h{}/{}/{}", sample.swap, sample.load, sample.mcp);
        return names;
    };
    const std::pair<const char*, const char*> cases[] {
        { R"("procs":[{"rss":1,"pid":"2","name":"","grp":""},{"rss":1,"pid":"1","name":"n","grp":"g"}])",
            "p2p1" },
        { R"("procs":[{"rss":1,"pid":102,"name":"n","grp":"g"},{"rss":1.5,"pid":"1","name":"n","grp":"g"}])",
            "" },
        { R"("procs":[{"pid":"1","name":"n","grp":"g"},{"rss":1,"name":"n","grp":"g"}])", "" },
        { R"("procs":[{"rss":1,"pid":"1","grp":"g"},{"rss":1,"pid":"1","name":"n"}])", "" },
        { R"("procs":[7,null,[],"x",{"rss":1,"pid":"1","name":"n","grp":"g"},{}])", "p1" },
        { R"("procs":{"0":{"rss":1,"pid":"1","name":"n","grp":"g"}})", "" },
        { R"("live_sessions":[{"rss":1,"pid":102,"name":"n","grp":"g"},{"name":7,"rss":"x"}])",
            "ln102agentlagentagent" },
        { R"("offenders":[{"label":""},{},{"label":7},{"label":"x"}])", "ox" },
        { R"("services":[{"scope":"u"},{"name":""},{"name":"y"},{"name":null}])", "sy" },
        { R"("history":[{"swap":12.9,"load":-1.9,"mcp":3},{"swap":"12","load":1,"mcp":1},{"load":1,"mcp":1}])",
            "h12/-1/3" },
        { R"("history":[{"swap":1e300,"load":1,"mcp":1},{"swap":1,"load":2,"mcp":3,"ts":4}])", "h1/2/3" }
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(kept(parsed("{" + std::string(text) + "}")), expected) << text;
}

TEST(OstrelData, ThePidOfALiveSessionIsKeptAsItReads)
{
    for (const auto& [pid, text] : { std::pair { "102", "102" }, { R"("102")", "102" }, { R"("")", "" },
             { "null", "" }, { "true", "true" }, { "-1", "-1" }, { R"({"a":1})", R"({"a":1})" },
             { R"("a\"é")", "a\"é" }, { "18446744073709551615", "18446744073709551615" } })
        EXPECT_EQ(
            parsed(R"({"live_sessions":[{"pid":)" + std::string(pid) + "}]}").liveSessions.at(0).pid, text)
            << pid;
}

TEST(OstrelData, SourceLinesAreTextsOnly)
{
    const auto data = parsed(R"({"accuracy":{"mcp":"ps","sessions":7,"duplicates":""}})");
    EXPECT_EQ(data.source("mcp"), "ps");
    EXPECT_EQ(data.source("duplicates"), "");
    for (const char* none : { "sessions", "absent" })
        EXPECT_EQ(data.source(none), std::nullopt) << none;
}

} // namespace
