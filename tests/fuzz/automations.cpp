// SPDX-License-Identifier: Apache-2.0
/// Whatever the bridge prints is read or refused; what was read is shown page by page, each row once, on
/// lines of bounded length, and no text of it breaks out of a question.
#include "automations/AgentBudget.h"
#include "automations/AutomationsText.h"
#include "core/Json.h"

#include "fuzz/FuzzTarget.h"

#include <algorithm>
#include <string>

namespace {

using namespace ostrel;

constexpr std::size_t longestText = 4000; ///< bytes: 600 signs and what stands around them

void showAll(const AutomationsSnapshot& snapshot)
{
    const AutomationsIndex index = indexOf(snapshot.items);
    AutomationsState state;
    if (!snapshot.items.empty())
        state.expanded.insert(snapshot.items.front().key());
    std::size_t seen = 0;
    for (std::size_t page = 0; page <= snapshot.items.size() / AutomationsPage::size; ++page) {
        state.page = page;
        const AutomationsBody body = automationsBody(state, { snapshot, index, {}, false });
        if (body.page != page)
            break;
        seen += body.rows.size();
        for (const AutomationRow& row : body.rows)
            check(row.title.size() < longestText && row.detail.find('\n') == std::string::npos);
    }
    check(seen == snapshot.items.size());
    for (const auto filter : { AutomationStateFilter::enabled, AutomationStateFilter::attention }) {
        state.filter.state = filter;
        (void)automationsBody(state, { snapshot, index, {}, true });
    }
}

void readReply(const json::Value& object)
{
    const auto snapshot = AutomationsSnapshot::parse(object);
    showAll(snapshot);
    (void)automationsSection(snapshot);
    const auto budget = agentBudget(snapshot.quotas, snapshot.items, platform::Instant());
    check(budget.windows.size() <= AgentBudget::mostWindows);
    for (const auto& window : budget.windows)
        check(!window.level || (*window.level >= 0 && *window.level <= 100));
    const Automation item = Automation::parse(object);
    const auto alert = confirmAlert("run", item);
    check(std::ranges::count(alert.text, '\n') == 4 && alert.title.find('\n') == std::string::npos);
    (void)AutomationJournal::parse(object, item);
    (void)outcomeText(AutomationActionResult::parse(object, "run", item.title));
}

} // namespace

void runOn(std::string_view text)
{
    if (const auto object = json::parseObject(text))
        readReply(*object);
}
