// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsIndex.h"

#include <initializer_list>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

Automation job(const char* lane, const char* title, const char* id, const char* host = "box",
    const char* state = "enabled", bool active = false, const char* result = "",
    const char* observation = "seen")
{
    Automation item;
    item.lane = lane;
    item.laneTitle = std::string("Lane ") + lane;
    item.title = title;
    item.id = id;
    item.host = host;
    item.state = state;
    item.active = active;
    item.lastResult = result;
    item.observation = observation;
    return item;
}

const std::vector<Automation> jobs {
    job("b", "beta", "3", "box", "blocked", true, "ok"),
    job("b", "Zeta", "9", "box", "enabled", true, "failed · exit 3"),
    job("a", "omega", "nightly-ÄPFEL", "Server"),
    job("b", "beta", "1", "box", "failed", false, "unobserved", "declared · unverified"),
    job("a", "alpha", "x:y\n-z", "box", "Failed", false, "has failed", "Unobserved"),
};

std::string found(const AutomationsFilter& filter)
{
    std::string titles;
    for (const auto place : matches(jobs, indexOf(jobs), filter))
        titles += jobs[place].title + jobs[place].id.substr(0, 1) + " ";
    return titles;
}

TEST(AutomationsIndex, RowsStandByLaneTitleThenTitleByteByByteAndElseAsTheyCame)
{
    EXPECT_EQ(found({}), "alphax omegan Zeta9 beta3 beta1 ");
}

TEST(AutomationsIndex, ARowPassesWhenLaneStateAndQueryAllLetItThrough)
{
    using enum AutomationStateFilter;
    struct Case {
        const char* lane;
        AutomationStateFilter state;
        const char* query;
        const char* expected;
    };
    for (const auto& [lane, state, query, expected] : std::initializer_list<Case> {
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
    struct Case {
        std::size_t count;
        std::size_t asked;
        AutomationsPage page;
        bool next;
    };
    for (const auto& [count, asked, page, next] : std::initializer_list<Case> {
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
