// SPDX-License-Identifier: Apache-2.0
#include "automations/AutomationsTab.h"

#include "core/Text.h"

#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::size_t confirmButton = 0;

} // namespace

AutomationsTab::AutomationsTab(const Platform& platform)
    : platform_(platform)
    , registry_({ platform.mainQueue, platform.globalQueue, platform.files, platform.bundle, platform.clock,
          platform.children })
{
}

AutomationsBody AutomationsTab::body()
{
    loadOnce();
    AutomationsBody body = automationsBody(
        state_, { registry_.snapshot(), registry_.index(), registry_.journals(), registry_.busy() });
    state_.page = body.page;
    return body;
}

AgentBudget AutomationsTab::agentOverview()
{
    loadOnce();
    const AutomationsSnapshot& snapshot = registry_.snapshot();
    return agentBudget(snapshot.quotas, snapshot.items, platform_.clock.now());
}

AutomationsSection AutomationsTab::settingsSection() const
{
    return automationsSection(registry_.snapshot());
}

void AutomationsTab::loadOnce()
{
    if (std::exchange(state_.loaded, true))
        return;
    registry_.load(false, rebuilding());
}

void AutomationsTab::refresh()
{
    if (registry_.busy())
        return;
    state_.lastAction = "rebuilding the inventory, up to a few minutes";
    registry_.load(true, life_.guard([this] { say(""); }));
    rebuild();
}

void AutomationsTab::chooseLane(const std::string& lane)
{
    state_.filter.lane = lane;
    rebuild();
}

void AutomationsTab::chooseState(AutomationStateFilter filter)
{
    state_.filter.state = filter;
    showPage(0);
}

void AutomationsTab::search(const std::string& query)
{
    state_.filter.query = query;
    showPage(0);
}

void AutomationsTab::previousPage()
{
    if (state_.page > 0)
        showPage(state_.page - 1);
}

void AutomationsTab::nextPage() { showPage(state_.page + 1); }

void AutomationsTab::showPage(std::size_t page)
{
    state_.page = page;
    rebuild();
}

void AutomationsTab::toggleRow(const Automation& item)
{
    if (state_.expanded.erase(item.key()) == 0) {
        state_.expanded.insert(item.key());
        registry_.journal(item, rebuilding());
    }
    rebuild();
}

void AutomationsTab::confirm(const std::string& op, const Automation& item)
{
    if (registry_.busy() || asking_)
        return;
    asking_ = true;
    // In a turn of its own: the control that asks may go meanwhile, and who pressed it by assistive
    // technology would wait for the answer.
    platform_.mainQueue.post(life_.guard([this, op, item] {
        ask(op, item);
        asking_ = false;
    }));
}

void AutomationsTab::ask(const std::string& op, const Automation& item)
{
    if (registry_.busy())
        return;
    if (platform_.alerts.runModal(confirmAlert(op, item)) != confirmButton)
        return say(fmt::format("cancelled · {}", item.title));
    say(fmt::format("{} · {} · running", op, item.title));
    registry_.act(item, op, life_.guard([this](const AutomationActionResult& result) { acted(result); }));
}

void AutomationsTab::acted(const AutomationActionResult& result)
{
    state_.lastAction = outcomeText(result);
    // Not drawn before the inventory that shows the effect.
    registry_.load(result.op != "plan", rebuilding());
}

void AutomationsTab::openReceipts()
{
    const std::string folder = registry_.receiptsDirectory();
    // Before the first receipt there is nothing to open.
    platform_.files.createDirectories(folder);
    platform_.workspace.open(fileUrl(folder));
}

void AutomationsTab::say(std::string lastAction)
{
    state_.lastAction = std::move(lastAction);
    rebuild();
}

std::function<void()> AutomationsTab::rebuilding()
{
    return life_.guard([this] { rebuild(); });
}

void AutomationsTab::rebuild()
{
    if (!body_)
        return;
    switch (body_->mode()) {
    case OstrelMode::automations:
    case OstrelMode::overview:
    case OstrelMode::sessions:
        return body_->renderBody();
    default:
        return;
    }
}

} // namespace ostrel
