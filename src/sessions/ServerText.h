// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Json.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// The profiles of caps, by their names on the wire.
inline constexpr std::array<std::string_view, 3> serverProfiles { "eco", "balanced", "fast" };

/// What the server tab is drawn from.
struct ServerState {
    bool busy = false; ///< a request is in flight
    std::string status = "Connect a server to see its capacity."; ///< may hold several lines
    std::optional<json::Value> health; ///< of the last good check
    std::optional<json::Value> preview; ///< what was sent for the last good preview; a start sends just that
    std::string alias; ///< of the host, as ssh knows it
    std::string repo; ///< on the server
    std::string task; ///< held in memory only
    std::string profile = "balanced";
};

/// A field to type in.
struct ServerField {
    std::string identifier; ///< "alias", "repo" or "task"
    std::string placeholder;
    std::string text;
};

/// A button of the tab.
struct ServerButton {
    std::string title;
    std::string tooltip;
    int width = 0; ///< points
    bool enabled = false;
    bool active = false;
    std::string identifier = {};
};

/// All that the server tab says.
struct ServerBody {
    std::string title;
    std::string note;
    bool fieldsEnabled = false;
    ServerField alias;
    ServerButton check;
    std::string health; ///< the server's capacity; empty before the first good check
    ServerField repo;
    ServerField task;
    std::array<ServerButton, serverProfiles.size()> profiles;
    std::string profileLine;
    ServerButton preview;
    ServerButton start;
    std::string status;
    std::string foot;
};

[[nodiscard]] ServerBody serverBody(const ServerState& state);
/// The line over the tab.
[[nodiscard]] std::string serverReadout(bool busy);

/// A server's capacity in one line.
[[nodiscard]] std::string healthLine(const json::Value& health);
/// What a preview found, in four lines.
[[nodiscard]] std::string previewStatus(const json::Value& result);
/// How a task ended, and the last of what it printed.
[[nodiscard]] std::string taskStatus(const json::Value& result);
/// Why an answer that isn't "ok" is none.
[[nodiscard]] std::string errorStatus(const std::optional<json::Value>& answer);

} // namespace ostrel
