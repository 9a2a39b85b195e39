// SPDX-License-Identifier: Apache-2.0
#include "sessions/SessionText.h"

#include "core/Text.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

namespace ostrel {

namespace {

/// Signs of a text of the bridge's that are shown: no label has room for more, and none is to work on
/// megabytes.
constexpr std::size_t longestShown = 600;
constexpr std::size_t mostNotes = 8;

std::string shown(std::string_view text) { return oneLine(firstSigns(text, longestShown)); }

Terminal parseTerminal(const json::Value& object)
{
    Terminal terminal;
    terminal.title = json::text(object, "title");
    terminal.handle = json::text(object, "handle");
    terminal.agentIdentity = json::textOr(object, "agentIdentity", terminal.agentIdentity);
    terminal.executionHostId = json::textOr(object, "executionHostId", terminal.executionHostId);
    terminal.connected = json::boolean(object, "connected").value_or(false);
    terminal.worktreePath = json::textOr(object, "worktreePath", "");
    return terminal;
}

std::vector<std::string> parseNotes(const json::Value& reply)
{
    std::vector<std::string> notes;
    if (const json::Value* array = json::array(reply, "notes"))
        for (const json::Value& note : *array)
            if (const auto text = json::asText(note); text && notes.size() < mostNotes)
                notes.push_back(shown(*text));
    return notes;
}

SessionRow sessionRow(const Terminal& terminal, const SessionState& state)
{
    return { .title = shown(terminal.title.value_or("Untitled terminal")),
        .detail
        = fmt::format("{} · {} · {} · {}", shown(terminal.agentIdentity), shown(terminal.executionHostId),
            terminal.connected ? "connected" : "disconnected", shown(terminal.worktreePath)),
        .enabled = !state.busy && terminal.connected && !state.selfTest,
        .handle = terminal.handle };
}

} // namespace

TerminalListing parseListing(const json::Value& reply)
{
    TerminalListing listing;
    listing.ok = json::boolean(reply, "ok").value_or(false);
    if (!listing.ok) {
        listing.error = shown(json::textOr(reply, "error", "Unavailable"));
        return listing;
    }
    if (const json::Value* array = json::array(reply, "terminals"))
        for (const json::Value& object : *array)
            if (object.is_object())
                listing.terminals.push_back(parseTerminal(object));
    std::ranges::stable_sort(listing.terminals, {}, [](const Terminal& terminal) {
        return terminal.title ? std::string_view(*terminal.title) : std::string_view();
    });
    listing.notes = parseNotes(reply);
    return listing;
}

std::string switchOutcome(const json::Value& reply)
{
    return shown(json::textOr(reply, "message", json::textOr(reply, "error", "No confirmation received")));
}

std::size_t SessionState::pages() const
{
    return std::max<std::size_t>(1, (rows.size() + pageSize - 1) / pageSize);
}

SessionBody sessionBody(const SessionState& state)
{
    SessionBody body { .status = state.status,
        .notes = state.notes,
        .refresh = state.busy ? "reading…" : "refresh terminals",
        .refreshEnabled = !state.busy,
        .rows = {},
        .pager = {} };
    const std::size_t first = state.page * SessionState::pageSize;
    const std::size_t end = std::min(state.rows.size(), first + SessionState::pageSize);
    for (std::size_t at = first; at < end; ++at)
        body.rows.push_back(sessionRow(state.rows[at], state));
    if (state.rows.size() > SessionState::pageSize)
        body.pager = Pager { .text = fmt::format("{} / {}", state.page + 1, state.pages()),
            .previous = !state.busy && state.page > 0,
            .next = !state.busy && state.page + 1 < state.pages() };
    return body;
}

} // namespace ostrel
