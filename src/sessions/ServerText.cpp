// SPDX-License-Identifier: Apache-2.0
#include "sessions/ServerText.h"

#include "core/Text.h"

#include <cstddef>

#include <fmt/format.h>

namespace ostrel {

namespace {

/// Signs of a task's output, or of an error, that are shown.
constexpr std::size_t longestOutput = 8000;
/// Signs of a single value that are shown.
constexpr std::size_t longestValue = 600;

std::string shown(const json::Value& object, std::string_view key, std::string_view fallback)
{
    return oneLine(firstSigns(json::printed(object, key, fallback), longestValue));
}

std::optional<std::int64_t> truncated(const json::Value& object, std::string_view key)
{
    const json::Value* value = json::member(object, key);
    return value ? json::asTruncated(*value) : std::nullopt;
}

ServerButton profileButton(std::string_view name, const ServerState& state)
{
    return { .title = std::string(name),
        .tooltip = fmt::format("the cpu and memory caps of the next server task: {}", name),
        .width = 110,
        .enabled = !state.busy,
        .active = state.profile == name,
        .identifier = std::string(name) };
}

} // namespace

ServerBody serverBody(const ServerState& state)
{
    ServerBody body {
        .title = "Make room for the next task.",
        .note = "Continue work in a new Codex task on your server. Include the goal, decisions and next step "
                "in the handoff below.",
        .fieldsEnabled = !state.busy,
        .alias = { "alias", "SSH host alias", state.alias },
        .check = { .title = "check capacity",
            .tooltip = "ask the alias over ssh for cores, load and free memory; read-only",
            .width = 144,
            .enabled = !state.busy },
        .health = state.health ? healthLine(*state.health) : std::string(),
        .repo = { "repo", "Remote repository path", state.repo },
        .task = { "task", "Task handoff – goal, context, next step", state.task },
        .profiles = {},
        .profileLine
        = fmt::format("profile: {} · sets the cpu and memory caps of the next server task", state.profile),
        .preview = { .title = "preview task",
            .tooltip = "show what will run on the server, with the caps of the profile; nothing starts",
            .width = 132,
            .enabled = !state.busy },
        .start = { .title = "start on server",
            .tooltip = "start the previewed task on the server; enabled after a preview",
            .width = 156,
            .enabled = !state.busy && state.preview.has_value(),
            .identifier = "start-server" },
        .status = state.status,
        .foot
        = "The local session stays open. Resource limits apply only to the new OSTREL job. Task text is "
          "held in memory; host and repository preferences stay on this Mac.",
    };
    for (std::size_t at = 0; at < serverProfiles.size(); ++at)
        body.profiles[at] = profileButton(serverProfiles[at], state);
    return body;
}

std::string serverReadout(bool busy) { return busy ? "server · working" : "server · on demand"; }

std::string healthLine(const json::Value& health)
{
    const auto cpus = truncated(health, "cpuCount");
    const auto load = json::number(health, "load1");
    const json::Value* memory = json::object(health, "memory");
    const auto available = memory ? truncated(*memory, "availableMB") : std::nullopt;
    return fmt::format("CONNECTED · {} · load {} · available {}",
        cpus && *cpus > 0 ? fmt::format("{} cores", *cpus) : "tools ready",
        load ? fmt::format("{:.1f}", *load) : "–", available ? memLabel(*available) : "–");
}

std::string previewStatus(const json::Value& result)
{
    const json::Value none = json::Value::object();
    const json::Value* told = json::object(result, "effectiveCaps");
    const json::Value& caps = told ? *told : none;
    return fmt::format("READY · {}\nWorkspace: {}\nCPU: {} of one core · memory: {} soft / {} hard · {}s\n"
                       "Handoff: {} characters. Starts a new Codex task.",
        shown(result, "host", "server"), shown(result, "repoPath", ""), shown(caps, "cpu", "–"),
        shown(caps, "memoryHigh", "–"), shown(caps, "memoryMax", "–"), shown(caps, "timeoutSeconds", "300"),
        shown(result, "taskChars", "0"));
}

std::string taskStatus(const json::Value& result)
{
    const std::string output = json::textOr(result, "outputExcerpt", "");
    return fmt::format("Server task finished · exit {}\n{}", truncated(result, "exitCode").value_or(-1),
        lastSigns(output, longestOutput));
}

std::string errorStatus(const std::optional<json::Value>& answer)
{
    const json::Value* error = answer ? json::object(*answer, "error") : nullptr;
    const auto message = error ? json::text(*error, "message") : std::nullopt;
    return message ? std::string(firstSigns(*message, longestOutput)) : "Invalid server response.";
}

} // namespace ostrel
