// SPDX-License-Identifier: Apache-2.0
/// Whatever the bridges to terminals and to the server print is read or refused, and shown in bounded room.
#include "core/Json.h"
#include "sessions/ServerText.h"
#include "sessions/SessionText.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace ostrel;
    const auto object = json::parseObject({ reinterpret_cast<const char*>(data), size });
    if (!object)
        return 0;
    SessionState state;
    TerminalListing listing = parseListing(*object);
    state.rows = std::move(listing.terminals);
    state.notes = std::move(listing.notes);
    state.page = state.pages() - 1;
    if (sessionBody(state).rows.size() > SessionState::pageSize)
        std::abort();
    (void)switchOutcome(*object);
    (void)healthLine(*object);
    (void)previewStatus(*object);
    (void)errorStatus(*object);
    // Lines of the answer and 8000 signs of output.
    if (taskStatus(*object).size() > 33000)
        std::abort();
    return 0;
}
