// SPDX-License-Identifier: Apache-2.0
#include "sessions/SessionPanel.h"

#include "core/LocalTime.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr platform::Seconds timeout { 20 };

json::Value noAnswer()
{
    return { { "ok", false }, { "error", "Terminal source unavailable. Refresh to retry." } };
}

} // namespace

SessionPanel::SessionPanel(const Platform& platform)
    : platform_(platform)
    , runner_(std::make_shared<CollectorRunner>(platform.children))
{
}

SessionBody SessionPanel::body()
{
    if (!state_.loaded)
        startReading();
    // A read that failed leaves fewer pages.
    state_.page = std::min(state_.page, state_.pages() - 1);
    return sessionBody(state_);
}

template <typename Answer>
void SessionPanel::call(std::vector<std::string> arguments, Answer (*read)(const json::Value&),
    std::function<void(Answer&)> completion)
{
    if (state_.busy)
        return;
    state_.busy = true;
    arguments.insert(
        arguments.begin(), platform_.bundle.pathForResource("collectors/session_bridge.py").value_or(""));
    const auto deliver = life_.guard([this, completion = std::move(completion)](Answer& answer) {
        state_.busy = false;
        completion(answer);
        rebuild();
    });
    platform_.globalQueue.async(platform::QueuePriority::userInitiated,
        [weak = std::weak_ptr(runner_), arguments = std::move(arguments), read, deliver,
            &mainQueue = platform_.mainQueue] {
            const auto runner = weak.lock();
            if (!runner)
                return;
            const CollectorResult result = runner->run({ .arguments = arguments, .timeout = timeout });
            // However the script ended: what it printed whole is its answer.
            const auto reply = json::parseObject(result.data);
            auto answer = std::make_shared<Answer>(read(reply ? *reply : noAnswer()));
            mainQueue.post([deliver, answer] { deliver(*answer); });
        });
}

void SessionPanel::refresh()
{
    if (state_.busy)
        return;
    startReading();
    rebuild();
}

void SessionPanel::startReading()
{
    state_.loaded = true;
    if (state_.selfTest)
        return showFixture();
    state_.status = "Reading terminal metadata…";
    call<TerminalListing>({ "list" }, parseListing, [this](TerminalListing& listing) { listed(listing); });
}

void SessionPanel::listed(TerminalListing& listing)
{
    state_.rows = std::move(listing.terminals);
    state_.notes = std::move(listing.notes);
    if (!listing.ok) {
        state_.status = std::move(listing.error);
        return;
    }
    state_.page = 0;
    state_.status = fmt::format(
        "{} terminal tabs · read {}", state_.rows.size(), localShortTimeText(platform_.clock.now()));
}

void SessionPanel::showFixture()
{
    state_.rows = { { .title = "Example terminal",
        .handle = "term_fixture",
        .agentIdentity = "codex",
        .executionHostId = "local",
        .connected = true,
        .worktreePath = "/example/project" } };
    state_.status = "Synthetic terminal fixture · navigation disabled";
}

void SessionPanel::openTerminal(const std::string& handle)
{
    if (state_.selfTest || state_.busy)
        return;
    // The list isn't read again: what it tells of the terminals is as old as it says.
    call<std::string>({ "switch", "--handle", handle, "--confirm" }, switchOutcome,
        [this](std::string& outcome) { state_.status = std::move(outcome); });
    rebuild();
}

void SessionPanel::previousPage()
{
    if (state_.page > 0)
        showPage(state_.page - 1);
}

void SessionPanel::nextPage() { showPage(state_.page + 1); }

void SessionPanel::showPage(std::size_t page)
{
    if (state_.busy)
        return;
    state_.page = std::min(page, state_.pages() - 1);
    rebuild();
}

void SessionPanel::rebuild()
{
    if (body_ && body_->mode() == OstrelMode::sessions)
        body_->renderBody();
}

} // namespace ostrel
