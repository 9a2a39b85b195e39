// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Json.h"
#include "core/LocalTime.h"
#include "core/Text.h"
#include "janitor/JanitorTab.h"

#include "support/FakeAlerts.h"
#include "support/FakeMachine.h"
#include "support/FakePanel.h"
#include "support/FakeProcessSignals.h"
#include "support/FakeWorkspace.h"

#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// The janitor beside an open cleanup tab, whose script answers what the test prepared.
struct JanitorBench : FakeMachine {
    using Lines = std::vector<std::string>;

    JanitorBench()
    {
        panel.tab = ostrel::OstrelMode::cleanup;
        tab.connect(panel);
        tab.setOnOpenTab([this](std::string_view target) { opened.emplace_back(target); });
    }

    /// Presses, with what the script answers to it and what the user answers to the question.
    template <typename Press>
    void press(Press press, const Lines& replies, std::size_t answered = 1)
    {
        for (const std::string& reply : replies)
            answer(reply, reply.empty() ? 1 : 0);
        alerts.answers = { answered };
        press();
        settle();
    }

    void pressFiles(const char* group, const Lines& replies, std::size_t answered = 1)
    {
        press([&] { tab.pressFiles(group); }, replies, answered);
    }
    void pressProcesses(const char* depth, const Lines& replies, std::size_t answered = 1)
    {
        press([&] { tab.pressProcesses(depth); }, replies, answered);
    }

    /// Lets everything come to its end.
    void settle()
    {
        do
            deliver();
        while (!globalQueue.waiting.empty());
    }

    /// The arguments behind the script's path, a run a line, of each run since the last call.
    Lines runs()
    {
        Lines lines;
        for (const auto& request : std::exchange(children.requests, {}))
            lines.push_back(ostrel::joined({ request.arguments.begin() + 1, request.arguments.end() }, " "));
        return lines;
    }

    /// Today's receipts.
    [[nodiscard]] std::vector<ostrel::json::Value> receipts() const
    {
        std::vector<ostrel::json::Value> found;
        const auto file = files.contents.find(engine.receipts().receiptsPathToday());
        std::istringstream text(file == files.contents.end() ? "" : file->second);
        for (std::string line; std::getline(text, line);)
            found.push_back(ostrel::json::parseObject(line).value_or(ostrel::json::Value()));
        return found;
    }

    [[nodiscard]] std::string clock() const { return ostrel::localClockText(time.now()); }
    [[nodiscard]] const std::string& status() const { return tab.state().status; }
    [[nodiscard]] const std::string& lastAction() const { return tab.state().lastAction; }
    /// The first question with its buttons, the one that cancels in brackets.
    [[nodiscard]] std::string question() const
    {
        const platform::Alert& alert = alerts.asked.at(0);
        Lines buttons = alert.buttons;
        std::string& cancel = buttons.at(platform::cancelButton(alert));
        cancel = "[" + cancel + "]";
        return ostrel::joined({ alert.title, alert.text, ostrel::joined(buttons, " ") }, "\n")
            + (alert.critical ? " !" : "");
    }

    FakeAlerts alerts;
    FakeWorkspace workspace;
    FakeProcessSignals processSignals;
    FakePanel panel;
    Lines opened; ///< tabs that were asked for
    ostrel::JanitorEngine::Platform parts { time, globalQueue, files, bundle, time, children,
        processSignals };
    ostrel::ProtectionList protection { defaults };
    ostrel::JanitorEngine engine { parts, protection };
    ostrel::JanitorTab tab { { parts, defaults, alerts, workspace } };
};

/// One process of a preview, as the script prints it.
inline std::string processJson(
    int pid, const std::string& name, int rss, const std::string& cmd, int start, const std::string& reason)
{
    return ostrel::json::dump({ { "pid", pid }, { "name", name }, { "rss_mb", rss }, { "cmd", cmd },
        { "start", start }, { "reason", reason } });
}

/// A preview of processes, as the script prints it.
inline std::string killJson(
    const std::vector<std::string>& allowed, const std::vector<std::string>& refused = {})
{
    return R"({"allowed":[)" + ostrel::joined(allowed, ",") + R"(],"refused":[)"
        + ostrel::joined(refused, ",") + "]}";
}
