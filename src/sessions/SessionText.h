// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Json.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// One terminal as the bridge listed it.
struct Terminal {
    std::optional<std::string> title;
    std::optional<std::string> handle; ///< what the bridge knows it by
    std::string agentIdentity = "shell";
    std::string executionHostId = "unknown host";
    bool connected = false; ///< somebody can see it
    std::string worktreePath;

    bool operator==(const Terminal&) const = default;
};

/// The bridge's answer to "list".
struct TerminalListing {
    bool ok = false;
    std::vector<Terminal> terminals; ///< by title
    std::string error; ///< why there is no list
    std::vector<std::string> notes; ///< what couldn't be read beside what could

    bool operator==(const TerminalListing&) const = default;
};

/// Reads an answer key by key; an absent or wrongly typed one takes its default. Any thread.
[[nodiscard]] TerminalListing parseListing(const json::Value& reply);
/// What came of bringing a terminal forward, in one sentence. Any thread.
[[nodiscard]] std::string switchOutcome(const json::Value& reply);

/// What the session panel is drawn from.
struct SessionState {
    static constexpr std::size_t pageSize = 8;

    std::vector<Terminal> rows;
    bool loaded = false; ///< the first read has been started
    bool busy = false; ///< the bridge runs
    bool selfTest = false; ///< the only row is made up, and leads nowhere
    std::size_t page = 0;
    std::string status = "Read the current Orca terminal list to continue an existing session.";
    std::vector<std::string> notes;

    /// At least one.
    [[nodiscard]] std::size_t pages() const;
};

/// One terminal's two lines and its button.
struct SessionRow {
    std::string title;
    std::string detail;
    bool enabled = false; ///< the button is
    std::optional<std::string> handle;

    bool operator==(const SessionRow&) const = default;
};

/// The two buttons below a list of several pages, and what stands between them.
struct Pager {
    std::string text;
    bool previous = false;
    bool next = false;

    bool operator==(const Pager&) const = default;
};

/// All that the block says.
struct SessionBody {
    std::string status;
    std::vector<std::string> notes;
    std::string refresh;
    bool refreshEnabled = false;
    std::vector<SessionRow> rows; ///< of the present page
    std::optional<Pager> pager;
};

/// `state.page` is one that there is.
[[nodiscard]] SessionBody sessionBody(const SessionState& state);

} // namespace ostrel
