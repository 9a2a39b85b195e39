// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationRecords.h"
#include "automations/AgentBudget.h"

#include <initializer_list>
#include <tuple>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;

json::Value parsed(std::string_view text) { return json::parseObject(text).value_or(json::Value()); }

Automation job(std::string_view text) { return Automation::parse(parsed(text)); }

const std::pair<const char*, std::string Automation::*> texts[] { { "lane", &Automation::lane },
    { "lane_title", &Automation::laneTitle }, { "id", &Automation::id }, { "title", &Automation::title },
    { "schedule", &Automation::schedule }, { "state", &Automation::state },
    { "executor", &Automation::executor }, { "host", &Automation::host }, { "owner", &Automation::owner },
    { "registry", &Automation::registry }, { "family", &Automation::family }, { "tag", &Automation::tag },
    { "observation", &Automation::observation }, { "location", &Automation::location },
    { "migration", &Automation::migration }, { "registry_state", &Automation::registryState },
    { "target", &Automation::target }, { "last_run", &Automation::lastRun },
    { "last_result", &Automation::lastResult }, { "next_run", &Automation::nextRun } };
const std::pair<const char*, bool Automation::*> flags[] { { "active", &Automation::active },
    { "can_run", &Automation::canRun }, { "toggles", &Automation::toggles } };

TEST(AutomationRecords, EachKeyFillsItsOwnFieldOrWithAnotherTypeLeavesTheDefault)
{
    const Automation blank = job("{}");
    EXPECT_EQ(blank.title + " " + blank.observation, "? unobserved");
    const json::Value wrong[] { nullptr, 12, true, json::Value::array({ "x" }), { { "x", "y" } } };
    for (const auto& [key, member] : texts) {
        Automation expected = blank;
        expected.*member = "text";
        EXPECT_EQ(Automation::parse({ { key, "text" }, { "tagged", 1 } }), expected) << key;
        for (const json::Value& value : wrong)
            EXPECT_EQ(Automation::parse({ { key, value } }), blank) << key << json::dump(value);
    }
    for (const auto& [key, member] : flags) {
        Automation expected = blank;
        expected.*member = true;
        EXPECT_EQ(Automation::parse({ { key, true } }), expected) << key;
        EXPECT_EQ(Automation::parse({ { key, 1 } }), blank) << key;
    }
    EXPECT_EQ(job(R"({"title":7,"id":"a:b\n-c","active":true})").key(), ":a:b\n-c");
}

TEST(AutomationRecords, AnArrayWithOneWrongElementCountsAsAbsentAndTheRestIsKept)
{
    const char* const good[] { R"("alerts":["a"])", R"("lanes":[{"key":"l","count":3.0}])",
        R"("automations":[{"id":"x"}])", R"("quotas":[{"host":"h"}])" };
    const char* const bad[] { R"("alerts":["a",1])", R"("lanes":[{"key":"l"},null])",
        R"("automations":[{"id":"x"},[]])", R"("quotas":[{"host":"h"},"q"])" };
    for (std::size_t broken = 0; broken <= std::size(bad); ++broken) {
        std::string text = R"({"ok":true,"counts":{"total":4,"active":2.5})";
        for (std::size_t at = 0; at < std::size(bad); ++at)
            text += std::string(",") + (at == broken ? bad[at] : good[at]);
        const auto snapshot = AutomationsSnapshot::parse(parsed(text + "}"));
        EXPECT_EQ(snapshot.alerts.size(), broken == 0 ? 0 : 1) << text;
        EXPECT_EQ(snapshot.lanes.size(), broken == 1 ? 0 : 1) << text;
        EXPECT_EQ(snapshot.items.size(), broken == 2 ? 0 : 1) << text;
        EXPECT_EQ(snapshot.quotas.size(), broken == 3 ? 0 : 1) << text;
        EXPECT_EQ(std::pair(snapshot.total, snapshot.active), std::pair(4L, 0L)) << text;
    }
}

TEST(AutomationRecords, CountsAreTheBridgesOwnAndNeverTheRows)
{
    const auto snapshot = AutomationsSnapshot::parse(
        parsed(R"({"ok":false,"error":"half","automations":[{"active":true}],"counts":[1]})"));
    EXPECT_EQ(std::pair(snapshot.total, snapshot.active), std::pair(0L, 0L));
    EXPECT_EQ(snapshot.items.size(), 1U);
    EXPECT_EQ(snapshot.error, "half");
}

TEST(AutomationRecords, TheFirstRuleThatFitsGivesTheFiguresState)
{
    using enum AutomationVoxelState;
    for (const auto& [row, state] : std::initializer_list<std::pair<const char*, AutomationVoxelState>> {
             { R"({"active":true})", unobserved }, // without an observation
             { R"({"observation":"manual · unverified","last_result":"failed","active":true})", unobserved },
             { R"({"observation":"synthetic","last_result":"failed · exit 3","active":true})", failed },
             { R"({"observation":"Unverified","last_result":"not failed","active":true})", active },
             { R"({"observation":"x","last_result":"unobserved","active":true})", active },
             { R"({"observation":"x","last_result":"unobserved"})", unobserved },
             { R"({"observation":"x","last_result":"unobserved yet"})", paused },
         })
        EXPECT_EQ(job(row).voxelState(), state) << row;
}

TEST(AutomationRecords, AJournalLeavesTheRowsValuesWhereItTellsNone)
{
    const Automation item = job(R"({"last_run":"L","last_result":"R","next_run":"N"})");
    const auto journal = AutomationJournal::parse(
        parsed(R"({"last_run":"L2","last_result":4,"journal":[{"at":"a","status":1,"line":"l"},{}]})"), item);
    EXPECT_EQ(journal.lastRun + journal.lastResult + journal.nextRun, "L2RN");
    const std::vector<AutomationRun> runs { { "a", "", "l" }, {} };
    EXPECT_EQ(journal.runs, runs);
}

TEST(AutomationRecords, AnActionTellsTheFirstTextThatThereIs)
{
    for (const auto& [answer, message] : std::initializer_list<std::pair<const char*, const char*>> {
             { R"({"ok":true,"message":"done","error":"no"})", "done" },
             { R"({"ok":true,"message":""})", "" },
             { R"({"ok":true,"message":1})", "run · T" },
             { R"({"ok":1,"message":"done"})", "the command returned an error" },
             { R"({"ok":false,"message":"done","error":"why","stderr":"deep"})", "why" },
             { R"({"error":"","stderr":"deep"})", "deep" },
             { R"({"error":5,"stderr":[]})", "the command returned an error" },
         })
        EXPECT_EQ(AutomationActionResult::parse(parsed(answer), "run", "T").message, message) << answer;
}

using Level = std::optional<double>;
constexpr std::int64_t now = 1'795'593'600;

AgentBudget budgetOf(const std::string& quotas, const std::vector<Automation>& items = {})
{
    const auto snapshot = AutomationsSnapshot::parse(parsed(R"({"quotas":)" + quotas + "}"));
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
    for (const auto& [state, ago, line, level, read] :
        std::initializer_list<std::tuple<const char*, std::int64_t, std::string, Level, std::string>> {
            { "observed", -50, "72% remaining", 72.9, "0m ago" },
            { "observed", 900, "72% remaining", 72.9, "15m ago" },
            { "observed", 901, "stale · refresh inventory", {}, "15m ago" },
            { "unavailable", 10, "unavailable · refresh inventory", {}, "0m ago" },
            { "observed", now, "stale · refresh inventory", {}, "not read" },
        }) {
        const auto shown = budgetOf(quota(state, ago, window)).windows.at(0);
        EXPECT_EQ(shown.line, "Codex · box · 7d · " + line) << state << ago;
        EXPECT_EQ(shown.level, level) << state << ago;
        EXPECT_EQ(shown.detail, "shared · " + read + " · reset 2026-11-27 09:30") << state << ago;
    }
}

TEST(AgentBudget, AWindowSaysWhatIsLeftAndHowLongItIs)
{
    for (const auto& [window, line, level, label] :
        std::initializer_list<std::tuple<const char*, std::string, Level, const char*>> {
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
        EXPECT_EQ(shown.line, "Codex · box · " + line);
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
