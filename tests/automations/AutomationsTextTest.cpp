// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsText.h"

#include "automations/AutomationsBench.h"

#include <tuple>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Row = std::map<std::string, json::Value>;

/// The tab's text over an inventory.
struct Drawn {
    explicit Drawn(const std::string& inventory, AutomationsState chosen = {})
        : state(std::move(chosen))
        , snapshot(AutomationsSnapshot::parse(json::parseObject(inventory).value_or(json::Value())))
    {
    }

    [[nodiscard]] AutomationsBody body(bool busy = false) const
    {
        return automationsBody(state, { snapshot, index, journals, busy });
    }

    AutomationsState state;
    AutomationsSnapshot snapshot;
    AutomationsIndex index { indexOf(snapshot.items) };
    std::map<std::string, std::vector<AutomationRun>, std::less<>> journals;
};

TEST(AutomationsText, ATimeLosesItsSecondsAndItsZone)
{
    for (const auto& [text, expected] : std::initializer_list<std::pair<const char*, const char*>> {
             { "", "—" },
             { "2026-11-25T08:00:01+01:00", "2026-11-25 08:00" },
             { "T", " " },
             { "2026-11-25T8", "2026-11-25 8" },
             { "aTéèêëïx", "a éèêëï" },
             { "on boot", "on boot" },
             { "1234567890123456789012345678", "1234567890123456789012345678" },
             { "éééééééééééééééééééééééééééé!", "éééééééééééééééééééééééééééé" },
         })
        EXPECT_EQ(shortTime(text), expected) << text;
}

TEST(AutomationsText, AHostileTextStaysOnOneLineAndWithinWhatAViewCanShow)
{
    EXPECT_EQ(shownText("a\nb\tc\x7f d\r"), "a b c  d ");
    const std::string shown = shownText(std::string(1 << 20, 'x'));
    EXPECT_EQ(shown.size(), 600 + std::string("…").size());
    const Drawn drawn(inventoryJson({ jobJson("l", "1", { { "title", std::string(1 << 20, '\n') } }) }));
    const AutomationsBody body = drawn.body();
    EXPECT_LT(body.rows.at(0).title.size(), 700U);
    const platform::Alert alert = confirmAlert("run", drawn.snapshot.items[0]);
    EXPECT_LT(alert.title.size(), 700U);
    EXPECT_EQ(alert.title.find('\n'), std::string::npos);
}

TEST(AutomationsText, TheHeaderTellsTheBridgesCountsAndBothTimes)
{
    const std::string full = inventoryJson({}, { { "counts", { { "total", 40 }, { "active", 7 } } } });
    for (const auto& [inventory, busy, title, read] :
        std::initializer_list<std::tuple<std::string, bool, const char*, const char*>> {
            { full, false, "40 entries · 7 enabled", "read 2026-11-25 08:00 · collected 2026-11-25 07:55" },
            { full, true, "rebuilding the inventory…", "read 2026-11-25 08:00 · collected 2026-11-25 07:55" },
            { "{}", false, "0 entries · 0 enabled", "inventory not read yet · collected —" } }) {
        const AutomationsBody body = Drawn(inventory).body(busy);
        EXPECT_EQ(body.title, title);
        EXPECT_EQ(body.readLine, read);
        EXPECT_EQ(body.refresh.enabled, !busy);
    }
}

TEST(AutomationsText, ALaneHasAChipUnlessItWasSeenToHoldNothing)
{
    const std::string inventory = inventoryJson({ jobJson("full", "1") },
        { { "counts", { { "total", 9 } } },
            { "lanes",
                json::Value::array({ { { "key", "full" }, { "title", "Full" }, { "count", 9 },
                                         { "observed", true }, { "owner", "me" }, { "registry", "cron" } },
                    { { "key", "empty" }, { "title", "Empty" }, { "observed", true } },
                    { { "key", "far" }, { "title", "Far" }, { "note", "no alias" } },
                    { { "key", "old" }, { "title", "Old" }, { "count", 2 }, { "note", "asleep" } } }) } });
    Drawn drawn(inventory);
    drawn.state.filter.lane = "far";
    std::string chips;
    const AutomationsBody body = drawn.body();
    for (const LaneChip& chip : body.lanes)
        chips += fmt::format(
            "{}={}{}({}) ", chip.lane, chip.button.title, chip.button.active ? "!" : "", chip.button.toolTip);
    EXPECT_EQ(chips, "=all · 9() full=Full · 9(me · cron) far=Far · –!(no alias) old=Old · 2(asleep) ");
    EXPECT_EQ(drawn.body().nothing, "no alias");
    drawn.state.filter.lane = "empty";
    EXPECT_EQ(drawn.body().nothing, "this scheduler holds nothing right now");
    std::string section;
    const AutomationsSection settings = automationsSection(drawn.snapshot);
    for (const auto& lane : settings.lanes)
        section += lane.text + (lane.observed ? "; " : " (far); ");
    EXPECT_EQ(section,
        "Full — 9 · me; Empty — 0 · ; Far — not reachable · no alias (far); "
        "Old — not reachable · asleep (far); ");
}

TEST(AutomationsText, APageOpensWithTheHeadingOfItsFirstRow)
{
    std::vector<json::Value> rows;
    rows.reserve(14);
    for (int at = 0; at < 14; ++at)
        rows.push_back(jobJson(at < 11 ? "a" : "b", std::to_string(100 + at)));
    Drawn drawn(inventoryJson(rows));
    for (const auto& [page, headings, label] :
        std::initializer_list<std::tuple<std::size_t, const char*, const char*>> {
            { 0, "as . . . . . . . . . . bs ", "14 matches · page 1/2" },
            { 1, "bs . ", "14 matches · page 2/2" }, { 9, "bs . ", "14 matches · page 2/2" } }) {
        drawn.state.page = page;
        const AutomationsBody body = drawn.body();
        std::string told;
        for (const AutomationRow& row : body.rows)
            told += (row.heading.empty() ? "." : row.heading) + " ";
        EXPECT_EQ(told, headings);
        EXPECT_EQ(body.pageLabel, label);
        EXPECT_EQ(body.previous.enabled, page > 0);
        EXPECT_EQ(body.next.enabled, page == 0);
    }
}

TEST(AutomationsText, TheWordOfARowIsItsResultUnlessNobodyLooked)
{
    for (const auto& [more, word, failed] : std::initializer_list<std::tuple<Row, const char*, bool>> {
             { {}, "enabled", false },
             { { { "last_result", "success" } }, "success", false },
             { { { "last_result", "unobserved" } }, "enabled", false },
             { { { "last_result", "failed · exit 3" } }, "failed · exit 3", true },
             { { { "last_result", "failed" }, { "observation", "unobserved here" } }, "unverified", false },
         }) {
        const AutomationsBody body = Drawn(inventoryJson({ jobJson("l", "1", more) })).body();
        EXPECT_EQ(body.rows.at(0).word, word);
        EXPECT_EQ(body.rows.at(0).failed, failed) << word;
        EXPECT_EQ(body.rows.at(0).accessibilityLabel, "Job 1, ls, enabled");
        EXPECT_EQ(body.rows.at(0).detail, "box · daily");
    }
}

TEST(AutomationsText, ACardOffersWhatTheJobAllowsAndNothingButReceiptsWhileBusy)
{
    for (const auto& [more, lane, offered] :
        std::initializer_list<std::tuple<Row, const char*, const char*>> {
            { {}, "launchd", "run/run once disable/disable plan/transfer plan " },
            { { { "active", false } }, "launchd", "run/run once enable/enable plan/transfer plan " },
            { { { "can_run", false } }, "registry", "disable/disable " },
            { { { "can_run", false }, { "toggles", false } }, "registry", "" },
            { { { "toggles", false } }, "cloud", "run/run once plan/transfer plan " },
        }) {
        AutomationsState state;
        state.expanded.insert(std::string(lane) + ":1");
        const Drawn drawn(inventoryJson({ jobJson(lane, "1", more) }), state);
        for (const bool busy : { false, true }) {
            const AutomationsBody body = drawn.body(busy);
            const auto& card = body.rows.at(0).card;
            ASSERT_TRUE(card);
            std::string told;
            for (const auto& action : { card->run, card->toggle, card->plan })
                if (action) {
                    told += action->op + "/" + action->button.title + " ";
                    EXPECT_EQ(action->button.enabled, !busy);
                }
            EXPECT_EQ(told, offered);
            EXPECT_TRUE(card->receipts.enabled);
        }
    }
}

TEST(AutomationsText, ACardSaysTwelveThingsInOrderAndTenRunsAtMost)
{
    AutomationsState state;
    state.expanded.insert("l:1");
    Drawn drawn(
        inventoryJson({ jobJson("l", "1",
            { { "last_run", "2026-11-25T06:00:01Z" }, { "registry_state", "listed" }, { "location", "/etc" },
                { "migration", "soon" }, { "owner", "ann" }, { "registry", "crontab" } }) }),
        state);
    std::string lines;
    const AutomationsBody body = drawn.body();
    for (const auto& line : body.rows.at(0).card->lines)
        lines += fmt::format("{}={};", line.label, line.value);
    EXPECT_EQ(lines,
        "scheduler=ls · box;schedule=daily;last run=2026-11-25 06:00;result=—;next "
        "run=—;observation=observed;"
        "registry state=listed;location=/etc;transfer=soon;owner=ann;registry=crontab;runs as=—;");
    const std::vector<std::string> none { "no run details returned yet" };
    EXPECT_EQ(drawn.body().rows.at(0).card->runs, none);
    drawn.journals["l:1"] = { 12, { "2026-11-25T06:00:01Z", "ok", "done" } };
    drawn.journals["l:1"][1] = { "", "ok", "x" };
    drawn.journals["l:1"][2] = { "", "", "two\nlines" };
    const auto runs = drawn.body().rows.at(0).card->runs;
    ASSERT_EQ(runs.size(), 10U);
    EXPECT_EQ(runs[0], "2026-11-25 06:00 · ok · done");
    EXPECT_EQ(runs[1], "ok · x");
    EXPECT_EQ(runs[2], "two lines");
}

TEST(AutomationsText, TheQuestionNamesTheJobAndWhatWillHappen)
{
    const Drawn drawn(inventoryJson({ jobJson("l", "1") }));
    for (const auto& [op, sentence] : std::initializer_list<std::pair<const char*, const char*>> {
             { "run",
                 "Request one run; this can consume the owning provider quota. Verify its journal "
                 "afterwards." },
             { "disable", "Pause future scheduled runs. Existing sessions stay open." },
             { "enable", "Resume this schedule after its registry and quota checks." },
             { "plan", "Save a local transfer checklist. No scheduler or session is changed." } }) {
        const platform::Alert alert = confirmAlert(op, drawn.snapshot.items[0]);
        EXPECT_EQ(alert.title, std::string(op) + " · Job 1");
        EXPECT_EQ(alert.text,
            std::string("scheduler ls · box\nschedule daily\n\n") + sentence
                + "\nthe action writes a receipt into Ostrel/receipts");
        const std::vector<std::string> buttons { op, "cancel" };
        EXPECT_EQ(alert.buttons, buttons);
        EXPECT_EQ(platform::cancelButton(alert), 1U);
        EXPECT_TRUE(alert.critical);
    }
}

TEST(AutomationsText, AnOutcomeNamesTheReceiptByItsFileAlone)
{
    for (const auto& [result, text] : std::initializer_list<std::pair<AutomationActionResult, const char*>> {
             { { true, "run", "started", "/h/receipts/2026-11-25.jsonl" },
                 "✓ started · receipt 2026-11-25.jsonl" },
             { { false, "run", "refused", "day.jsonl" }, "✗ refused · receipt day.jsonl" },
             { { true, "run", "started", "/h/receipts/" }, "✓ started · receipt receipts" },
             { { false, "run", "the bridge did not answer", "" }, "✗ the bridge did not answer" } })
        EXPECT_EQ(outcomeText(result), text);
}

TEST(AutomationsText, WarningsAndLanesThatWentAstrayDontFillThePanel)
{
    json::Value lanes = json::Value::array();
    json::Value alerts = json::Value::array();
    for (int at = 0; at < 1000; ++at) {
        lanes.push_back({ { "key", std::to_string(at) } });
        alerts.push_back("alert " + std::to_string(at));
    }
    const AutomationsBody body
        = Drawn(inventoryJson({}, { { "lanes", lanes }, { "alerts", alerts }, { "error", "half" } })).body();
    ASSERT_EQ(body.alerts.size(), 6U);
    EXPECT_EQ(body.alerts.back(), "△ alert 5");
    EXPECT_EQ(body.lanes.size(), 61U);
    EXPECT_EQ(body.error, "inventory: half");
}

/// What stands in the tab for a filter: the titles, and the first sign of each id.
std::string found(const AutomationsFilter& filter)
{
    static const Drawn drawn(inventoryJson({
        jobJson("b", "3", { { "title", "beta" }, { "state", "blocked" } }),
        jobJson("b", "9", { { "title", "Zeta" }, { "last_result", "failed · exit 3" } }),
        jobJson("a", "nightly-ÄPFEL", { { "title", "omega" }, { "host", "Server" }, { "active", false } }),
        jobJson("b", "1",
            { { "title", "beta" }, { "state", "failed" }, { "active", false },
                { "observation", "declared · unverified" } }),
        jobJson("a", "x:y\n-z",
            { { "title", "alpha" }, { "state", "Failed" }, { "active", false },
                { "last_result", "has failed" }, { "observation", "Unobserved" } }),
    }));
    std::string titles;
    for (const auto place : matches(drawn.snapshot.items, drawn.index, filter))
        titles += drawn.snapshot.items[place].title + drawn.snapshot.items[place].id.substr(0, 1) + " ";
    return titles;
}

TEST(AutomationsIndex, RowsStandByLaneAndTitleAndPassWhenLaneStateAndQueryAllLetThemThrough)
{
    using enum AutomationStateFilter;
    struct Case {
        const char* lane;
        AutomationStateFilter state;
        const char *query, *expected;
    };
    for (const auto& [lane, state, query, expected] : std::initializer_list<Case> {
             { "", all, "", "alphax omegan Zeta9 beta3 beta1 " },
             { "a", all, "", "alphax omegan " },
             { "A", all, "", "" },
             { "", enabled, "", "Zeta9 beta3 " },
             { "", attention, "", "Zeta9 beta3 beta1 " },
             { "", unverified, "", "beta1 " },
             { "", all, "BETA", "beta3 beta1 " },
             { "", all, "äpfel", "omegan " }, // the id, which no row shows
             { "", all, "äpfel ser", "omegan " }, // from the id into the host
             { "", all, "server box", "" },
             { "", all, "X:Y\n", "alphax " },
             { "", all, ".*", "" },
             { "b", attention, "beta", "beta3 beta1 " },
             { "b", enabled, "1", "" },
         })
        EXPECT_EQ(found({ lane, state, query }), expected) << lane << rawValue(state) << query;
}

TEST(AutomationsIndex, APageThatIsGoneBecomesTheLastOne)
{
    for (const auto& [count, asked, page, next] :
        std::initializer_list<std::tuple<std::size_t, std::size_t, AutomationsPage, bool>> {
            { 0, 0, { 0, 1, 0, 0 }, false },
            { 0, 7, { 0, 1, 0, 0 }, false },
            { 12, 1, { 0, 1, 0, 12 }, false },
            { 24, 0, { 0, 2, 0, 12 }, true },
            { 24, 5, { 1, 2, 12, 12 }, false },
            { 25, 2, { 2, 3, 24, 1 }, false },
        }) {
        EXPECT_EQ(pageOf(count, asked), page) << count << " " << asked;
        EXPECT_EQ(pageOf(count, asked).hasNext(), next) << count << " " << asked;
    }
}

} // namespace
