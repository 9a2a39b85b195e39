// SPDX-License-Identifier: Apache-2.0
#include "panel/Workloads.h"

#include "panel/WorkloadsText.h"

#include <charconv>
#include <cstdint>
#include <optional>

#include <fmt/format.h>

namespace ostrel {

namespace {

/// The whole text as a decimal integer.
std::optional<std::int64_t> integer(std::string_view text)
{
    std::int64_t value = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

} // namespace

Workloads::Workloads(const Services& services)
    : services_(services)
    , processFilter_(processFilters.front().key)
{
}

void Workloads::selectProcessFilter(std::string_view identifier)
{
    processFilter_ = identifier.empty() ? processFilters.front().key : identifier;
    if (body_)
        body_->renderBody();
}

void Workloads::killProcess(const std::string& pid, const std::string& name, const std::string& cmd)
{
    if (services_.janitor.protection().isProtected(name, cmd))
        return services_.mainQueue.post(life_.guard([this, name] { explain(name); }));
    const auto number = integer(pid);
    if (!number)
        return;
    services_.janitor.confirmStop(*number, name, life_.guard([this](const std::string& line) {
        services_.maintenance.report(fmt::format("{} {}", services_.maintenance.nowStr(), line));
        services_.snapshots.fetchPythonData();
    }));
}

void Workloads::explain(const std::string& name)
{
    (void)services_.alerts.runModal({ .title = fmt::format("{} is protected", name),
        .text = "Rule 44: OSTREL never stops agents, Finder, Apple daemons or itself. The protection list is "
                "in settings.",
        .buttons = { "OK" } });
}

} // namespace ostrel
