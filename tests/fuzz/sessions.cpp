// SPDX-License-Identifier: Apache-2.0
/// Whatever the bridges to terminals and to the server print is read or refused, and shown in bounded room.
#include "core/Json.h"
#include "sessions/ServerText.h"
#include "sessions/SessionText.h"

#include "fuzz/FuzzTarget.h"

using namespace ostrel;

void runOn(std::string_view text)
{
    const auto object = json::parseObject(text);
    if (!object)
        return;
    SessionState state;
    TerminalListing listing = parseListing(*object);
    state.rows = std::move(listing.terminals);
    state.notes = std::move(listing.notes);
    state.page = state.pages() - 1;
    check(sessionBody(state).rows.size() <= SessionState::pageSize);
    (void)switchOutcome(*object);
    (void)healthLine(*object);
    (void)previewStatus(*object);
    (void)errorStatus(*object);
    // Lines of the answer and 8000 signs of output.
    check(taskStatus(*object).size() <= 33000);
}
