// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationRecords.h"

#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

json::Value parsed(std::string_view text) { return json::parseObject(text).value_or(json::Value()); }

Automation job(std::string_view text) { return Automation::parse(parsed(text)); }

TEST(AutomationRecords, EachKeyOfARowFillsItsOwnField)
{
    Automation expected { .lane = "v:lane" };
    expected.laneTitle = "v:lane_title";
    expected.id = "v:id";
    expected.title = "v:title";
    expected.schedule = "v:schedule";
    expected.state = "v:state";
    expected.executor = "v:executor";
    expected.host = "v:host";
    expected.owner = "v:owner";
    expected.registry = "v:registry";
    expected.family = "v:family";
    expected.tag = "v:tag";
    expected.observation = "v:observation";
    expected.location = "v:location";
    expected.migration = "v:migration";
    expected.registryState = "v:registry_state";
    expected.target = "v:target";
    expected.lastRun = "v:last_run";
    expected.lastResult = "v:last_result";
    expected.nextRun = "v:next_run";
    json::Value row { { "tagged", 1 } };
    for (const char* key : { "lane", "lane_title", "id", "title", "schedule", "state", "executor", "host",
             "owner", "registry", "family", "tag", "observation", "location", "migration", "registry_state",
             "target", "last_run", "last_result", "next_run" })
        row[key] = std::string("v:") + key;
    EXPECT_EQ(Automation::parse(row), expected);
    for (const auto& [key, member] : { std::pair { "active", &Automation::active },
             { "can_run", &Automation::canRun }, { "toggles", &Automation::toggles } }) {
        const Automation item = Automation::parse({ { key, true } });
        EXPECT_TRUE(item.*member) << key;
        EXPECT_EQ(item.active + item.canRun + item.toggles, 1) << key;
    }
}

TEST(AutomationRecords, AKeyOfAnotherTypeTakesItsDefaultAndLeavesTheOthers)
{
    const Automation blank = job("{}");
    EXPECT_EQ(blank.title, "?");
    EXPECT_EQ(blank.observation, "unobserved");
    const json::Value wrong[] { nullptr, 12, true, json::Value::array({ "x" }), { { "x", "y" } } };
    for (const char* key : { "lane", "lane_title", "id", "title", "schedule", "state", "executor", "host",
             "owner", "registry", "family", "tag", "observation", "location", "migration", "registry_state",
             "target", "last_run", "last_result", "next_run" })
        for (const json::Value& value : wrong)
            EXPECT_EQ(Automation::parse({ { key, value } }), blank) << key << json::dump(value);
    for (const char* key : { "active", "can_run", "toggles" })
        EXPECT_EQ(Automation::parse({ { key, 1 } }), blank) << key;
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
    struct Case {
        const char* row;
        AutomationVoxelState state;
    };
    for (const auto& [row, state] : std::initializer_list<Case> {
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
    EXPECT_EQ(journal.lastRun, "L2");
    EXPECT_EQ(journal.lastResult, "R");
    EXPECT_EQ(journal.nextRun, "N");
    const std::vector<AutomationRun> runs { { "a", "", "l" }, {} };
    EXPECT_EQ(journal.runs, runs);
}

TEST(AutomationRecords, AnActionTellsTheFirstTextThatThereIs)
{
    struct Case {
        const char* answer;
        const char* message;
    };
    for (const auto& [answer, message] : std::initializer_list<Case> {
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

} // namespace
