// SPDX-License-Identifier: Apache-2.0
#include "sessions/RemoteServer.h"

#include "support/FakeMachine.h"
#include "support/FakePanel.h"

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Lines = std::vector<std::string>;

constexpr const char* good
    = R"({"ok":true,"result":{"host":"mill · capped","repoPath":"/srv/r","taskChars":12,
    "effectiveCaps":{"cpu":"100%","memoryHigh":"2048 MB","memoryMax":"3072 MB","timeoutSeconds":300}}})";

/// The server's flows beside an open server tab, whose script answers what the test prepared.
struct Bench : FakeMachine {
    Bench()
    {
        bundle.resources.emplace("collectors/ostrel_remote.py", "/opt/ostrel_remote.py");
        panel.tab = OstrelMode::server;
        server->connect(panel);
    }

    void fill(const std::string& alias, const std::string& repo, const std::string& task)
    {
        EXPECT_TRUE(server->controlTextDidChange("alias", alias));
        EXPECT_TRUE(server->controlTextDidChange("repo", repo));
        EXPECT_TRUE(server->controlTextDidChange("task", task));
    }
    void preview(const std::string& output = good, int status = 0, const std::string& error = {})
    {
        answer(output, status, error);
        server->previewServerTask();
        deliver();
    }
    void check(const std::string& output)
    {
        answer(output);
        server->checkServer();
        deliver();
    }

    /// What the script was last asked.
    [[nodiscard]] json::Value asked() const
    {
        const std::string input = children.requests.back().input.value_or("");
        EXPECT_EQ(input.find('\n'), input.size() - 1) << "one line";
        return json::parseObject(input).value_or(json::Value());
    }
    [[nodiscard]] const std::string& status() const { return server->state().status; }
    [[nodiscard]] bool previewed() const { return server->state().preview.has_value(); }
    int renders() { return static_cast<int>(std::exchange(panel.calls, {}).size()); }

    FakePanel panel;
    std::optional<RemoteServer> server { std::in_place,
        RemoteServer::Platform { time, globalQueue, files, bundle, children, defaults } };
};

TEST(RemoteServer, WhateverIsInAFieldTravelsAsDataAlone)
{
    const std::string hostile[] { "-oProxyCommand=touch x", "a\"b'c\\d\n$(touch x)`y`;|&\r\t%s{0}",
        "ü🙂\x01", "", std::string(1U << 20, 'w') };
    for (const std::string& text : hostile) {
        Bench bench;
        bench.fill(text, text + "r", text + "t");
        bench.preview();
        EXPECT_EQ(bench.children.requests.back().arguments, Lines { "/opt/ostrel_remote.py" });
        EXPECT_EQ(bench.children.requests.back().executable, "/usr/bin/python3");
        EXPECT_EQ(bench.children.requests.back().timeout, platform::Seconds(18));
        const json::Value request = bench.asked();
        EXPECT_EQ(request.size(), 3U);
        EXPECT_EQ(request["command"], "execute");
        json::Value payload = request["payload"];
        EXPECT_EQ(payload["jobId"].get<std::string>().size(), 15U);
        payload.erase("jobId");
        EXPECT_EQ(payload,
            (json::Value { { "sshAlias", text }, { "repoPath", text + "r" }, { "task", text + "t" },
                { "kind", "codex_continuation" }, { "timeoutSeconds", 300 }, { "profile", "balanced" },
                { "apply", false } }));
        bench.check("{}");
        EXPECT_EQ(bench.asked()["payload"], (json::Value { { "sshAlias", text } }));
        EXPECT_EQ(bench.asked()["command"], "health");
        EXPECT_EQ(bench.defaults.text("ostrel.server.alias"), text);
        EXPECT_EQ(bench.defaults.text("ostrel.server.repo"), text + "r");
    }
}

TEST(RemoteServer, StartsJustWhatWasPreviewedAndOnlyOnce)
{
    Bench bench;
    bench.server->startServerTask();
    EXPECT_TRUE(bench.globalQueue.waiting.empty()) << "nothing was previewed";
    bench.fill("mill", "/srv/r", "go");
    bench.preview();
    EXPECT_EQ(bench.status(),
        "READY · mill · capped\nWorkspace: /srv/r\nCPU: 100% of one core · memory: 2048 MB soft / 3072 MB "
        "hard · 300s\nHandoff: 12 characters. Starts a new Codex task.");
    const json::Value previewed = bench.asked();
    bench.answer(R"({"ok":true,"result":{"exitCode":0,"outputExcerpt":"done"}})");
    bench.server->startServerTask();
    EXPECT_EQ(bench.status(), "Server task running · up to 5 minutes. You can close this panel.");
    EXPECT_FALSE(bench.previewed());
    bench.server->startServerTask();
    bench.server->checkServer();
    bench.server->previewServerTask();
    bench.panel.open = false;
    bench.deliver();
    EXPECT_EQ(bench.status(), "Server task finished · exit 0\ndone");
    EXPECT_EQ(bench.children.requests.size(), 2U) << "one request at a time";
    EXPECT_EQ(bench.children.requests.back().timeout, platform::Seconds(325));
    json::Value started = bench.asked();
    EXPECT_NE(started["id"], previewed["id"]);
    EXPECT_EQ(started["payload"]["apply"], true);
    started["payload"]["apply"] = false;
    EXPECT_EQ(started["payload"], previewed["payload"]) << "with the same job";
    bench.server->startServerTask();
    EXPECT_TRUE(bench.globalQueue.waiting.empty());
    bench.preview();
    EXPECT_NE(bench.asked()["payload"]["jobId"], previewed["payload"]["jobId"])
        << "a job of its own each time";
}

TEST(RemoteServer, AnEditClosesTheStartAndSoDoesAProfile)
{
    for (const char* edited : { "alias", "repo", "task" }) {
        Bench bench;
        bench.preview();
        EXPECT_TRUE(serverBody(bench.server->state()).start.enabled);
        bench.renders();
        EXPECT_FALSE(bench.server->controlTextDidChange("other", "x"));
        EXPECT_TRUE(bench.previewed()) << "another tab's field";
        EXPECT_TRUE(bench.server->controlTextDidChange(edited, "x"));
        EXPECT_FALSE(bench.previewed()) << edited;
        EXPECT_EQ(bench.renders(), 0) << "the field keeps the keyboard";
    }
    Bench bench;
    bench.preview();
    bench.renders();
    bench.server->selectServerProfile("eco");
    EXPECT_FALSE(bench.previewed());
    EXPECT_EQ(bench.renders(), 1);
    bench.preview();
    EXPECT_EQ(bench.asked()["payload"]["profile"], "eco");
    bench.server->selectServerProfile("");
    EXPECT_EQ(bench.server->state().profile, "balanced");
}

TEST(RemoteServer, WhatBecomesOfAPreviewAfterEachAnswer)
{
    struct Case {
        const char* output;
        int status;
        const char* error;
        std::string said;
        bool keeps; ///< the preview before
    };
    constexpr const char* preparing = "Preparing server task…";
    const Case cases[] {
        { good, 1, "Traceback", "Traceback", true },
        { "", 15, "", "Server bridge stopped.", true },
        { "", 0, "", "Invalid server response.", false },
        { "[true]", 0, "", "Invalid server response.", false },
        { R"({"ok":1,"result":{}})", 0, "", "Invalid server response.", false },
        { R"({"ok":false,"error":{"message":"The disk is full."}})", 0, "", "The disk is full.", false },
        { R"({"ok":false,"error":{"message":["x"]}})", 0, "", "Invalid server response.", false },
        { R"({"error":"The disk is full."})", 0, "", "Invalid server response.", false },
        { R"({"ok":true,"result":[]})", 0, "", preparing, true },
        { R"({"ok":true})", 0, "", preparing, true },
        { R"({"ok":true,"result":{}})", 0, "",
            "READY · server\nWorkspace: \nCPU: – of one core · memory: – soft / – hard · 300s\nHandoff: 0 "
            "characters. Starts a new Codex task.",
            true },
        { R"({"ok":true,"result":{"host":7,"repoPath":null,"taskChars":"many","effectiveCaps":{"cpu":1.5,
            "memoryHigh":[1],"memoryMax":true,"timeoutSeconds":"x\ny"}}})",
            0, "",
            "READY · 7\nWorkspace: null\nCPU: 1.5 of one core · memory: [1] soft / true hard · x "
            "ys\nHandoff: "
            "many characters. Starts a new Codex task.",
            true },
    };
    for (const Case& c : cases) {
        Bench bench;
        bench.preview();
        ASSERT_TRUE(bench.previewed());
        bench.preview(c.output, c.status, c.error);
        EXPECT_EQ(bench.status(), c.said) << c.output;
        EXPECT_EQ(bench.previewed(), c.keeps) << c.output;
        EXPECT_FALSE(bench.server->state().busy);
    }
}

TEST(RemoteServer, TellsOfAFinishedTaskItsEnd)
{
    const std::string tail = std::string(7990, 'e') + "ü🙂 the end";
    const std::pair<std::string, std::string> cases[] {
        { "{}", "-1\n" },
        { R"({"exitCode":"0","outputExcerpt":5})", "-1\n" },
        { R"({"exitCode":124.0,"outputExcerpt":"a\nb"})", "124\na\nb" },
        { R"({"exitCode":1.9})", "1\n" },
        { R"({"exitCode":1e300})", "-1\n" },
        { R"({"exitCode":3,"outputExcerpt":")" + std::string(1U << 20, 'b') + tail + "\"}", "3\n" + tail },
    };
    for (const auto& [result, said] : cases) {
        Bench bench;
        bench.preview();
        bench.answer(R"({"ok":true,"result":)" + result + "}");
        bench.server->startServerTask();
        bench.deliver();
        EXPECT_EQ(bench.status(), "Server task finished · exit " + said) << result.substr(0, 60);
    }
}

TEST(RemoteServer, KeepsTheCapacityOfTheLastGoodCheck)
{
    const std::pair<std::string, const char*> cases[] {
        { R"({"cpuCount":8,"load1":0.25,"memory":{"availableMB":2048}})",
            "CONNECTED · 8 cores · load 0.2 · available 2.0 gb" },
        { "{}", "CONNECTED · tools ready · load – · available –" },
        { R"({"cpuCount":0,"load1":"x","memory":{"availableMB":"x"}})",
            "CONNECTED · tools ready · load – · available –" },
        { R"({"cpuCount":-4,"load1":true,"memory":7})", "CONNECTED · tools ready · load – · available –" },
        { R"({"cpuCount":4.9,"load1":3,"memory":{"availableMB":512.7}})",
            "CONNECTED · 4 cores · load 3.0 · available 512 mb" },
    };
    for (const auto& [result, line] : cases) {
        Bench bench;
        bench.check(R"({"ok":true,"result":)" + result + "}");
        EXPECT_EQ(bench.status(), "Read-only server check complete.");
        EXPECT_EQ(serverBody(bench.server->state()).health, line);
        bench.answer("", 1);
        bench.server->checkServer();
        EXPECT_EQ(bench.status(), "Checking server capacity…");
        bench.deliver();
        EXPECT_EQ(serverBody(bench.server->state()).health, line) << "a failure takes nothing away";
    }
}

TEST(RemoteServer, DrawsWhereItIsSeenAndOutlivesTheTab)
{
    Bench bench;
    const std::pair<OstrelMode, int> cases[] { { OstrelMode::server, 2 }, { OstrelMode::overview, 2 },
        { OstrelMode::system, 1 } };
    for (const auto& [tab, renders] : cases) {
        bench.panel.tab = tab;
        bench.renders();
        bench.check(R"({"ok":true,"result":{}})");
        EXPECT_EQ(bench.renders(), renders);
        EXPECT_TRUE(bench.server->state().health);
    }
    bench.server->checkServer();
    EXPECT_EQ(bench.globalQueue.waiting.front().first, platform::QueuePriority::utility);
    bench.globalQueue.run();
    bench.server.reset();
    bench.time.runPosted();
}

TEST(RemoteServer, AliasAndRepositoryComeBackAfterAStartAndTheTaskDoesnt)
{
    Bench bench;
    bench.fill("mill", "/srv/r", "go");
    bench.server->selectServerProfile("fast");
    EXPECT_EQ(bench.defaults.writes, 0);
    bench.preview("", 1);
    RemoteServer next(
        { bench.time, bench.globalQueue, bench.files, bench.bundle, bench.children, bench.defaults });
    next.loadSettings();
    EXPECT_EQ(next.state().alias + next.state().repo, "mill/srv/r") << "though the request failed";
    EXPECT_EQ(next.state().task + next.state().profile, "balanced");
    bench.defaults.setBoolean("ostrel.server.alias", true);
    next.loadSettings();
    EXPECT_EQ(next.state().alias, "");
    bench.bundle.resources.clear();
    EXPECT_EQ(next.remotePath(),
        bench.files.homeDirectory() + "/Library/Application Support/Ostrel/runtime/ostrel_remote.py");
}

} // namespace
