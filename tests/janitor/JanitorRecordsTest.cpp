// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorRecords.h"
#include "janitor/JanitorReceipts.h"
#include "janitor/JanitorText.h"

#include <tuple>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using Kind = JanitorAction::Kind;

json::Value parsed(const std::string& text) { return json::parseObject(text).value(); }

std::string told(const JanitorFinding& finding)
{
    const auto& [id, level, title, seen, source, proposal, action, estMB, count] = finding;
    return fmt::format("{} {} {} {} {} {} {} {} | {} {} {}", id, level, title, seen, source, proposal, estMB,
        count, action.target, action.group, action.pids);
}

TEST(JanitorRecords, AFindingIsReadKeyByKeyAndEachKeyAloneFallsBack)
{
    const auto whole = JanitorFinding::parse(parsed(
        R"({"id":"swap","level":"critical","title":"t","seen":"s","source":"ps","proposal":"p",
            "est_mb":12.5,"count":3.0,"action":{"kind":"kill","target":"x","group":"g",
            "pids":[12,"13",13.5,14,null,1e30,15.0]}})"));
    EXPECT_EQ(told(whole), "swap critical t s ps p 12.5 3 | x g [12, 14, 15]");
    EXPECT_EQ(whole.levelColor(), LevelColor::red);
    EXPECT_EQ(whole.action.kind, Kind::kill);
    for (const char* text : { "{}",
             R"({"id":1,"level":[],"title":{},"seen":null,"source":true,"proposal":2,"est_mb":"9",
                "count":3.5,"action":[]})",
             R"({"action":{"kind":"format","target":7,"group":[],"pids":{"a":1}}})" }) {
        const auto bare = JanitorFinding::parse(parsed(text));
        EXPECT_EQ(told(bare), "finding info     0 0 |   []");
        EXPECT_EQ(bare.levelColor(), LevelColor::muted);
        EXPECT_EQ(bare.action.kind, Kind::none);
    }
    const std::pair<const char*, Kind> kinds[] { { "none", Kind::none }, { "open-tab", Kind::openTab },
        { "kill", Kind::kill }, { "clean", Kind::clean }, { "Kill", Kind::none } };
    for (const auto& [word, kind] : kinds)
        EXPECT_EQ(JanitorAction::parse({ { "kind", word } }).kind, kind) << word;
    EXPECT_EQ(JanitorFinding { .level = "warning" }.levelColor(), LevelColor::ink);
}

TEST(JanitorRecords, TheListsOfAReplyAreTakenAsFarAsTheyAreWhatTheyShouldBe)
{
    for (const char* text : { "{}",
             R"({"files":{},"allowed":7,"refused":"x","groups":{},"titles":[],"candidates":true,
                "findings":null,"receipts":{},"group":1,"title":2,"count":"3","size_mb":[],"error":4})" }) {
        const json::Value reply = parsed(text);
        const auto preview = JanitorPreview::parse(reply, "asked");
        EXPECT_EQ(preview.group + preview.title + preview.error, "askedasked");
        EXPECT_EQ(preview.sizeMB + static_cast<double>(preview.count), 0);
        EXPECT_TRUE(preview.files.empty());
        const auto kills = JanitorKillPreview::parse(reply);
        const auto groups = JanitorGroups::parse(reply);
        EXPECT_TRUE(kills.allowed.empty() && kills.refused.empty());
        EXPECT_TRUE(groups.names.empty() && groups.titles.empty() && receiptLines(reply, 12).empty());
        EXPECT_TRUE(parseFindings(reply).empty() && parseCandidates(reply).empty());
    }
    const auto groups
        = JanitorGroups::parse(parsed(R"({"groups":["a",1,"b",null],"titles":{"a":"A","b":2}})"));
    EXPECT_EQ(groups.names, (std::vector<std::string> { "a", "b" }));
    EXPECT_EQ(groups.titles.size(), 1U);
    const auto candidates
        = parseCandidates(parsed(R"({"candidates":[{"name":"n","size_mb":2},7,{"size_mb":"x"}]})"));
    ASSERT_EQ(candidates.size(), 2U);
    EXPECT_EQ(candidates[0].name, "n");
    EXPECT_EQ(candidates[0].sizeMB, 2);
}

TEST(JanitorRecords, OfAHugeListingOnlyWhatIsShownIsKept)
{
    json::Value files = json::Value::array();
    for (int file = 0; file < 100'000; ++file)
        files.push_back({ { "path", "/p" + std::to_string(file) }, { "mb", file }, { "age_days", 15 } });
    const auto preview = JanitorPreview::parse({ { "count", 100'000 }, { "files", std::move(files) } }, "g");
    EXPECT_EQ(preview.count, 100'000);
    ASSERT_EQ(preview.files.size(), JanitorPreview::mostFiles);
    EXPECT_EQ(preview.files[499].path, "/p499");
    EXPECT_EQ(preview.files[499].mb, 499);
    EXPECT_EQ(preview.files[499].ageDays, 15);
}

TEST(JanitorRecords, ASumOfMemoryStaysWithinItsNumber)
{
    constexpr auto rss = [](std::int64_t mb) { return JanitorProcess { .rssMB = mb }; };
    const std::pair<std::vector<JanitorProcess>, std::int64_t> cases[] {
        { {}, 0 },
        { { rss(3), rss(4) }, 7 },
        { { rss(INT64_MAX), rss(1) }, INT64_MAX },
        { { rss(INT64_MIN), rss(-1), rss(5) }, INT64_MIN + 5 },
    };
    for (const auto& [processes, sum] : cases)
        EXPECT_EQ(rssMBOf(processes), sum);
}

TEST(JanitorReceipts, EachKindHasItsLine)
{
    const std::pair<const char*, const char*> cases[] {
        { R"({"ts":"T","kind":"stop","name":"n","pid":7,"rss_mb":12,"result":"sent"})",
            "T · stop n pid 7 · 12 mb · sent" },
        { R"({"kind":"stop","pid":"7"})", " · stop  pid 0 · 0 mb · " },
        { R"({"ts":"T","kind":"clean","group":"g","removed":3,"freed_mb":12.5})",
            "T · clean g · 3 files · 12.5 mb" },
        { R"({"ts":"T","kind":"clean","freed_mb":12})", "T · clean  · 0 files · 12.0 mb" },
        { R"({"ts":"T","kind":"clean"})", "T · clean  · 0 files · 0.0 mb" },
        { R"({"ts":"T","kind":"protection","name":"x"})", "T · protection" },
        { R"({"ts":"T"})", "T · action" },
        { R"({"ts":1,"kind":2})", " · action" },
    };
    for (const auto& [receipt, line] : cases)
        EXPECT_EQ(receiptLine(parsed(receipt)), line);
    EXPECT_EQ(receiptLines(parsed(R"({"receipts":[{"ts":"1"},7,{"ts":"2"},{"ts":"3"}]})"), 2),
        (std::vector<std::string> { "1 · action", "2 · action" }));
}

TEST(JanitorText, ASizeTurnsToGigabytesAtTheFirstOne)
{
    for (const auto& [value, text] :
        { std::pair { 0.0, "0 mb" }, { 12.4, "12 mb" }, { 1023.4, "1023 mb" }, { 1024, "1.0 gb" } })
        EXPECT_EQ(mb(value), text);
}

TEST(JanitorText, ACardTellsTheAmountAndOffersWhatTheFindingProposes)
{
    const std::tuple<JanitorAction, double, std::int64_t, const char*> cases[] {
        { {}, 0, 0, "|" },
        { { Kind::openTab, "system" }, 0, 4, "4|open system 220" },
        { { Kind::clean, "", "agents-deep" }, 2048, 0, "2.0 gb|open cleanup 220" },
        { { Kind::kill, "", "", { 4, 5 } }, 12, 2, "12 mb · 2|stop 2 processes… 240" },
        { { Kind::kill }, -1, -1, "|stop 0 processes… 240" },
    };
    for (const auto& [action, estMB, count, expected] : cases) {
        JanitorFinding finding { .level = "critical", .title = "t", .seen = "s", .source = "ps" };
        finding.action = action;
        finding.estMB = estMB;
        finding.count = count;
        const FindingCard card = findingCard(finding);
        const auto& button = card.button;
        EXPECT_EQ(
            card.amount + "|" + (button ? fmt::format("{} {}", button->title, button->width) : ""), expected);
        EXPECT_EQ(card.level + " " + card.source + " " + card.accessibilityLabel,
            "CRITICAL source: ps critical, t, s");
    }
}

} // namespace
