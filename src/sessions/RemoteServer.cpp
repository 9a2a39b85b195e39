// SPDX-License-Identifier: Apache-2.0
#include "sessions/RemoteServer.h"

#include "core/Text.h"
#include "core/Uuid.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace ostrel {

namespace {

constexpr std::string_view healthCommand = "health";
constexpr std::string_view taskCommand = "execute";
constexpr platform::Seconds quick { 18 };
/// What a task may take on the server.
constexpr int taskSeconds = 300;
/// That, and what it takes to get there and to tell of the end.
constexpr platform::Seconds patience { 325 };
constexpr std::size_t jobLetters = 8;

bool starts(const json::Value& payload) { return json::boolean(payload, "apply").value_or(false); }

} // namespace

struct RemoteServer::Reply {
    std::int32_t status = -1;
    std::string error;
    std::optional<json::Value> answer; ///< whatever the status is
};

RemoteServer::RemoteServer(const Platform& platform)
    : platform_(platform)
    , remoteRunner_(std::make_shared<CollectorRunner>(platform.children))
{
}

void RemoteServer::loadSettings()
{
    state_.alias = platform_.defaults.text(aliasKey).value_or("");
    state_.repo = platform_.defaults.text(repoKey).value_or("");
}

std::string RemoteServer::remotePath() const
{
    if (auto path = platform_.bundle.pathForResource("collectors/ostrel_remote.py"))
        return *path;
    return platform_.files.homeDirectory() + "/Library/Application Support/Ostrel/runtime/ostrel_remote.py";
}

json::Value RemoteServer::serverPayload() const
{
    return { { "sshAlias", state_.alias }, { "repoPath", state_.repo }, { "task", state_.task },
        { "kind", "codex_continuation" }, { "jobId", "ostrel-" + lowered(freshUuid()).substr(0, jobLetters) },
        { "timeoutSeconds", taskSeconds }, { "profile", state_.profile } };
}

void RemoteServer::checkServer() { callRemote(healthCommand, { { "sshAlias", state_.alias } }, quick); }

void RemoteServer::previewServerTask()
{
    json::Value payload = serverPayload();
    payload["apply"] = false;
    callRemote(taskCommand, payload, quick);
}

void RemoteServer::startServerTask()
{
    if (!state_.preview || state_.busy)
        return;
    json::Value payload = std::move(*state_.preview);
    state_.preview.reset();
    payload["apply"] = true;
    callRemote(taskCommand, payload, patience);
}

void RemoteServer::selectServerProfile(std::string_view identifier)
{
    state_.profile = identifier.empty() ? ServerState().profile : identifier;
    state_.preview.reset();
    renderBody();
}

bool RemoteServer::controlTextDidChange(std::string_view identifier, std::string text)
{
    std::string* field = nullptr;
    if (identifier == "alias")
        field = &state_.alias;
    else if (identifier == "repo")
        field = &state_.repo;
    else if (identifier == "task")
        field = &state_.task;
    if (!field)
        return false;
    *field = std::move(text);
    state_.preview.reset();
    return true;
}

void RemoteServer::callRemote(std::string_view command, const json::Value& payload, platform::Seconds timeout)
{
    if (state_.busy)
        return;
    const std::string input
        = json::dump({ { "id", freshUuid() }, { "command", command }, { "payload", payload } }) + "\n";
    state_.busy = true;
    state_.status = command == healthCommand ? "Checking server capacity…" : "Preparing server task…";
    if (starts(payload))
        state_.status = "Server task running · up to 5 minutes. You can close this panel.";
    platform_.defaults.setText(aliasKey, state_.alias);
    platform_.defaults.setText(repoKey, state_.repo);
    renderBody();
    const auto deliver = life_.guard([this, command = std::string(command), payload](
                                         const Reply& reply) { receive(command, payload, reply); });
    platform_.globalQueue.async(platform::QueuePriority::utility,
        [weak = std::weak_ptr(remoteRunner_), path = remotePath(), input, timeout, deliver,
            &mainQueue = platform_.mainQueue] {
            const auto runner = weak.lock();
            if (!runner)
                return;
            CollectorResult result
                = runner->run({ .arguments = { path }, .input = input, .timeout = timeout });
            auto reply = std::make_shared<Reply>(
                Reply { result.status, std::move(result.error), json::parseObject(result.data) });
            mainQueue.post([deliver, reply] { deliver(*reply); });
        });
}

void RemoteServer::receive(const std::string& command, const json::Value& payload, const Reply& reply)
{
    state_.busy = false;
    if (reply.status != 0) {
        state_.status = reply.error.empty() ? "Server bridge stopped." : reply.error;
    } else if (reply.answer && json::boolean(*reply.answer, "ok").value_or(false)) {
        if (const json::Value* result = json::object(*reply.answer, "result"))
            answered(command, payload, *result);
    } else {
        state_.preview.reset();
        state_.status = errorStatus(reply.answer);
    }
    if (body_ && (body_->mode() == OstrelMode::server || body_->mode() == OstrelMode::overview))
        body_->renderBody();
}

void RemoteServer::answered(const std::string& command, const json::Value& payload, const json::Value& result)
{
    if (command == healthCommand) {
        state_.health = result;
        state_.status = "Read-only server check complete.";
    } else if (starts(payload)) {
        state_.status = taskStatus(result);
    } else {
        state_.preview = payload;
        state_.status = previewStatus(result);
    }
}

void RemoteServer::renderBody()
{
    if (body_)
        body_->renderBody();
}

} // namespace ostrel
