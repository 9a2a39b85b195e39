// SPDX-License-Identifier: Apache-2.0
#include "automations/AgentBudget.h"

#include <chrono>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;

constexpr std::int64_t now = 1'795'593'600;

AgentBudget budgetOf(const std::string& quotas, const std::vector<Automation>& items = {})
{
    const auto answer = json::parseObject(R"({"quotas":)" + quotas + "}");
    const auto snapshot = AutomationsSnapshot::parse(answer.value_or(json::Value()));
    return agentBudget(snapshot.quotas, items, platform::Instant(std::chrono::seconds(now)));
}

/// A quota row with one window, read so many seconds ago.
std::string quota(const char* state, std::int64_t ago, const char* window)
{
    return fmt::format(R"([{{"host":"box","state":"{}","checked_at":{},"scope":"shared","guard":"20%",)"
                       R"("windows":[{}]}}])",
        state, now - ago, window);
}

TEST(AgentBudget, AReadingTurnsStaleBehindAQuarterOfAnHour)
{
    const char* const window = R"({"remaining":72.9,"minutes":10080,"resets_at":"2026-11-27T09:30:00Z"})";
    struct Case {
        const char* state;
        std::int64_t ago;
        const char* line;
        std::optional<double> level;
        const char* detail;
    };
    for (const auto& [state, ago, line, level, detail] :
        std::initializer_list<Case> {
            { "observed", -50, "72% remaining", 72.9, "shared · 0m ago · reset 2026-11-27 09:30" },
            { "observed", 900, "72% remaining", 72.9, "shared · 15m ago · reset 2026-11-27 09:30" },
            { "observed", 901, "stale · refresh inventory", {}, "shared · 15m ago · reset 2026-11-27 09:30" },
            { "unavailable", 10, "unavailable · refresh inventory", {},
                "shared · 0m ago · reset 2026-11-27 09:30" },
            { "observed", now, "stale · refresh inventory", {},
                "shared · not read · reset 2026-11-27 09:30" },
        }) {
        const auto shown = budgetOf(quota(state, ago, window)).windows.at(0);
        EXPECT_EQ(shown.line, std::string("Codex · box · 7d · ") + line) << state << ago;
        EXPECT_EQ(shown.level, level) << state << ago;
        EXPECT_EQ(shown.detail, detail) << state << ago;
    }
}

TEST(AgentBudget, AWindowSaysWhatIsLeftAndHowLongItIs)
{
    struct Case {
        const char* window;
        const char* line;
        std::optional<double> level;
        const char* label;
    };
    for (const auto& [window, line, level, label] : std::initializer_list<Case> {
             { R"({"remaining":5,"minutes":1439})", "1439m · 5% remaining", 5.0,
                 "Codex box · 5 percent quota remaining" },
             { R"({"remaining":5,"minutes":1440})", "1d · 5% remaining", 5.0,
                 "Codex box · 5 percent quota remaining" },
             { R"({"minutes":"7","remaining":"5"})", "0m · 0% remaining", {}, "" },
             { R"({"remaining":-7.9,"minutes":-3})", "-3m · -7% remaining", 0.0,
                 "Codex box · -7 percent quota remaining" },
             { R"({"remaining":1e300,"minutes":2879})", "1d · 9000000000000000% remaining", 100.0,
                 "Codex box · 9000000000000000 percent quota remaining" },
         }) {
        const auto shown = budgetOf(quota("observed", 60, window)).windows.at(0);
        EXPECT_EQ(shown.line, std::string("Codex · box · ") + line);
        EXPECT_EQ(shown.level, level) << window;
        EXPECT_EQ(shown.levelLabel, label);
        EXPECT_EQ(shown.toolTip, "Read 1m ago. shared. Guard: 20%. Resets unknown");
        EXPECT_EQ(shown.detail, "shared · 1m ago · reset —");
    }
}

TEST(AgentBudget, EveryRowHasAWindowAtLeastAndAllOfItsOwnInOrder)
{
    for (const auto& [quotas, lines] :
        std::initializer_list<std::pair<const char*, std::vector<std::string>>> {
            { "[{}]", { "Codex · unknown · 0m · unavailable · refresh inventory" } },
            { R"([{"windows":[{},4]}])", { "Codex · unknown · 0m · unavailable · refresh inventory" } },
            { R"([{"host":"a","state":"off","windows":[{"minutes":1},{"minutes":2}]},{"host":"b"}])",
                { "Codex · a · 1m · off · refresh inventory", "Codex · a · 2m · off · refresh inventory",
                    "Codex · b · 0m · unavailable · refresh inventory" } } }) {
        std::vector<std::string> told;
        const AgentBudget budget = budgetOf(quotas);
        for (const auto& window : budget.windows)
            told.push_back(window.line);
        EXPECT_EQ(told, lines) << quotas;
        EXPECT_EQ(budget.notRead, "");
    }
    EXPECT_EQ(budgetOf("[]").notRead, "Quota not read yet · open automations to refresh");
}

TEST(AgentBudget, QuotasThatWentAstrayDontFillThePanel)
{
    std::string rows = "[{}";
    for (int at = 0; at < 5000; ++at)
        rows += R"(,{"windows":[{},{}]})";
    EXPECT_EQ(budgetOf(rows + "]").windows.size(), 40U);
}

TEST(AgentBudget, SchedulesCountByMachineAndOtherLanesNowhere)
{
    std::vector<Automation> items;
    for (const char* lane : { "orca", "codex", "launchd", "launchd", "systemd", "registry", "cloud",
             "my-cloud-2", "Cloud", "", "systemd2" })
        items.push_back({ .lane = lane });
    EXPECT_EQ(budgetOf("[]", items).schedules, "SCHEDULES   Mac 4   →   server 2   ·   cloud 2 unverified");
}

} // namespace
