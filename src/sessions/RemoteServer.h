// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "collector/CollectorRunner.h"
#include "core/LifeToken.h"
#include "core/PanelBody.h"
#include "platform/Bundle.h"
#include "platform/ChildProcess.h"
#include "platform/FileManager.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"
#include "platform/UserDefaults.h"
#include "sessions/ServerText.h"

#include <memory>
#include <string>
#include <string_view>

namespace ostrel {

/// The way to hand work to a server, in two stages: a preview that starts nothing, and a start of just what
/// was previewed, which only a good preview opens. All of it goes through one script, one request at a time;
/// a request outlives the panel's closing. Main thread.
class RemoteServer {
public:
    /// All of it must outlive this; `children` and the queues live to the process's end.
    struct Platform {
        platform::MainQueue& mainQueue;
        platform::GlobalQueue& globalQueue;
        const platform::FileManager& files;
        const platform::Bundle& bundle;
        platform::ChildProcess& children;
        platform::UserDefaults& defaults;
    };
    static constexpr std::string_view aliasKey = "ostrel.server.alias";
    static constexpr std::string_view repoKey = "ostrel.server.repo";

    explicit RemoteServer(const Platform& platform);

    /// Connects the panel's body, which must outlive this. Without one the flows only keep state.
    void connect(PanelBody& body) { body_ = &body; }
    /// Reads alias and repository of the last request.
    void loadSettings();

    [[nodiscard]] const ServerState& state() const { return state_; }
    /// Where the script stands, or would stand.
    [[nodiscard]] std::string remotePath() const;

    // Presses and edits.

    /// Asks the server for its capacity.
    void checkServer();
    /// Has host, folder, tools and caps checked; starts nothing.
    void previewServerTask();
    /// Starts what was previewed; nothing without a preview, or while a request is in flight.
    void startServerTask();
    /// An empty identifier means "balanced".
    void selectServerProfile(std::string_view identifier);
    /// The text of the field "alias", "repo" or "task" was edited; other fields are ignored. A preview counts
    /// no longer then. Draws nothing, so that the field keeps keyboard and caret. True when the field is one
    /// of them.
    bool controlTextDidChange(std::string_view identifier, std::string text);

private:
    /// What is to be run, under a new number.
    [[nodiscard]] json::Value serverPayload() const;
    /// Runs one request; nothing while another one is in flight.
    void callRemote(std::string_view command, const json::Value& payload, platform::Seconds timeout);
    /// What the script made of a request.
    struct Reply;
    void receive(const std::string& command, const json::Value& payload, const Reply& reply);
    void answered(const std::string& command, const json::Value& payload, const json::Value& result);
    void renderBody();

    Platform platform_;
    std::shared_ptr<CollectorRunner> remoteRunner_;
    ServerState state_;
    PanelBody* body_ = nullptr;
    LifeToken life_;
};

} // namespace ostrel
