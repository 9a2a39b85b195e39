// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsBridge.h"

#include <utility>

namespace ostrel {

namespace {

constexpr const char* fixtureVariable = "OSTREL_PUBLIC_FIXTURE";

json::Value syntheticQuota(const char* host, double now)
{
    return { { "host", host }, { "state", "observed" }, { "checked_at", now },
        { "scope", "shared account · synthetic example" }, { "guard", "example only" },
        { "windows",
            json::Value::array(
                { { { "remaining", 72 }, { "minutes", 10080 }, { "resets_at", "example window" } } }) } };
}

} // namespace

json::Value syntheticInventory(double now)
{
    const json::Value local { { "id", "example-local" }, { "title", "Example local report" },
        { "lane", "orca" }, { "host", "mac" }, { "family", "panel" }, { "state", "enabled" },
        { "active", true }, { "schedule", "daily · synthetic" }, { "observation", "synthetic" } };
    const json::Value server { { "id", "example-server" }, { "title", "Example server task" },
        { "lane", "systemd" }, { "host", "server" }, { "family", "stack" }, { "state", "paused" },
        { "schedule", "weekly · synthetic" }, { "observation", "synthetic" } };
    const json::Value cloud { { "id", "example-cloud" }, { "title", "Example cloud task" },
        { "lane", "cloud" }, { "host", "cloud" }, { "family", "ring" }, { "state", "unverified" },
        { "schedule", "manual · synthetic" }, { "observation", "manual · unverified" } };
    const json::Value rows = json::Value::array({ local, server, cloud });
    return { { "ok", true }, { "generated_at", "synthetic fixture" }, { "read_at", "synthetic fixture" },
        { "counts", { { "total", rows.size() }, { "active", 1 } } }, { "automations", rows },
        { "quotas", json::Value::array({ syntheticQuota("Mac", now), syntheticQuota("Server", now) }) } };
}

AutomationsBridge::AutomationsBridge(platform::ChildProcess& children, const platform::Clock& clock)
    : children_(children)
    , clock_(clock)
    , runner_(children)
{
}

bool AutomationsBridge::answersWithFixture() const
{
    if (!selfTest_)
        return false;
    const platform::Environment environment = children_.environment();
    const auto fixture = environment.find(fixtureVariable);
    return fixture != environment.end() && fixture->second == "1";
}

std::optional<json::Value> AutomationsBridge::call(
    const std::string& path, std::vector<std::string> arguments, platform::Seconds timeout)
{
    if (answersWithFixture()) {
        if (!arguments.empty() && arguments.front() == "list")
            return syntheticInventory(platform::Seconds(clock_.now().time_since_epoch()).count());
        return json::Value { { "ok", false }, { "error", "Public fixture is read-only" } };
    }
    arguments.insert(arguments.begin(), path);
    const CollectorResult result
        = runner_.run({ .arguments = std::move(arguments), .input = {}, .timeout = timeout });
    return result.status == 0 ? json::parseObject(result.data) : std::nullopt;
}

} // namespace ostrel
