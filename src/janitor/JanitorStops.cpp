// SPDX-License-Identifier: Apache-2.0
/// The flows of `JanitorTab` that stop processes.
#include "core/Text.h"
#include "janitor/JanitorAlerts.h"
#include "janitor/JanitorTab.h"

#include <algorithm>
#include <map>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr std::string_view findingFlow = "stop a finding's";

std::string mcpFlow(std::string_view depth) { return fmt::format("mcp {}", depth); }

std::string oneFlow(std::int64_t pid) { return fmt::format("stop {}", pid); }

std::string allProtected(const JanitorKillPreview& preview)
{
    return fmt::format("nothing to stop: all {} processes are protected", preview.refused.size());
}

/// Those of the second look that are what was listed and agreed to: the same number, command and start.
std::vector<JanitorProcess> unchanged(
    const std::vector<JanitorProcess>& second, const std::vector<JanitorProcess>& listed)
{
    std::map<std::int64_t, const JanitorProcess*> known;
    for (const JanitorProcess& process : listed)
        known.emplace(process.pid, &process);
    std::vector<JanitorProcess> same;
    for (const JanitorProcess& process : second)
        if (const auto found = known.find(process.pid); found != known.end()
            && found->second->cmd == process.cmd && found->second->start == process.start)
            same.push_back(process);
    return same;
}

std::vector<std::int64_t> pidsOf(const std::vector<JanitorProcess>& processes)
{
    std::vector<std::int64_t> pids;
    for (const JanitorProcess& process : processes)
        if (std::ranges::find(pids, process.pid) == pids.end())
            pids.push_back(process.pid);
    return pids;
}

} // namespace

JanitorTab::Processes JanitorTab::stopAll(const std::vector<StopTarget>& targets)
{
    Processes stopped;
    for (const StopTarget& target : targets)
        if (engine_.stop(target).starts_with("stopped"))
            stopped.push_back(target.process);
    return stopped;
}

void JanitorTab::pressProcesses(const std::string& depth)
{
    if (!begin(mcpFlow(depth)))
        return;
    state_.status = fmt::format("reading ps for mcp · {}; nothing is stopped yet", depth);
    rebuild();
    engine_.mcpPreview(
        depth, [this, depth](JanitorKillPreview preview) { processesListed(depth, std::move(preview)); });
}

void JanitorTab::processesListed(const std::string& depth, JanitorKillPreview preview)
{
    state_.status = fmt::format(
        "mcp · {}: {} processes · {} mb · listed {}", depth, preview.count(), preview.rssMB(), now());
    state_.processPreviews.insert_or_assign(depth, preview);
    if (preview.count() == 0)
        state_.lastAction = preview.refused.empty() ? "nothing to stop at this depth" : allProtected(preview);
    rebuild();
    if (preview.count() == 0)
        return end(mcpFlow(depth));
    ask([this, depth, preview = std::move(preview)] { confirmStopMCP(depth, preview); });
}

void JanitorTab::confirmStopMCP(const std::string& depth, const JanitorKillPreview& preview)
{
    if (platform_.alerts.runModal(stopMCPAlert(depth, preview)) != actButton) {
        end(mcpFlow(depth));
        return say(fmt::format("cancelled · {} mcp processes left running", preview.count()));
    }
    say(fmt::format("stopping {} mcp processes…", preview.count()));
    // The second look, after the answer: what was listed may have ended or changed meanwhile.
    engine_.killPreview(
        pidsOf(preview.allowed), [this, depth, listed = preview.allowed](const JanitorKillPreview& second) {
            stopMCP(depth, listed, second);
        });
}

void JanitorTab::stopMCP(const std::string& depth, const Processes& listed, const JanitorKillPreview& second)
{
    const Processes stopped = stopAll(engine_.hold(unchanged(second.allowed, listed)));
    const std::size_t gone = listed.size() - stopped.size();
    state_.lastAction = fmt::format("✓ {} of {} mcp processes stopped · {} mb{} · receipts written",
        stopped.size(), listed.size(), rssMBOf(stopped),
        gone > 0 ? fmt::format(" · {} gone or changed, left alone", gone) : std::string());
    end(mcpFlow(depth));
    if (const auto found = state_.processPreviews.find(depth); found != state_.processPreviews.end())
        state_.processPreviews.erase(found);
    reloadAll();
}

void JanitorTab::confirmStop(const std::vector<std::int64_t>& pids, const std::string& title)
{
    if (!begin(std::string(findingFlow)))
        return;
    say(fmt::format("checking {} processes against the protection list…", pids.size()));
    engine_.killPreview(pids, [this, pids, title](JanitorKillPreview preview) {
        // Whatever a script answers: nothing that wasn't asked for.
        std::erase_if(preview.allowed, [&pids](const JanitorProcess& process) {
            return std::ranges::find(pids, process.pid) == pids.end();
        });
        findingChecked(title, preview);
    });
}

void JanitorTab::findingChecked(const std::string& title, const JanitorKillPreview& preview)
{
    if (preview.count() == 0) {
        end(std::string(findingFlow));
        return say(allProtected(preview));
    }
    ask([this, title, preview, targets = engine_.hold(preview.allowed)] {
        askStopFinding(title, preview, targets);
    });
}

void JanitorTab::askStopFinding(
    const std::string& title, const JanitorKillPreview& preview, const std::vector<StopTarget>& targets)
{
    const bool agreed = platform_.alerts.runModal(stopFindingAlert(title, preview)) == actButton;
    end(std::string(findingFlow));
    if (!agreed)
        return say(fmt::format("cancelled · {} processes left running", preview.count()));
    state_.lastAction = fmt::format("✓ {} of {} processes stopped · {} mb · receipts written",
        stopAll(targets).size(), preview.count(), preview.rssMB());
    reloadAll();
}

void JanitorTab::confirmStop(
    std::int64_t pid, const std::string& name, std::function<void(const std::string&)> onDone)
{
    if (!begin(oneFlow(pid)))
        return;
    engine_.killPreview(
        { pid }, [this, pid, name, onDone = std::move(onDone)](const JanitorKillPreview& preview) {
            const auto found = std::ranges::find(preview.allowed, pid, &JanitorProcess::pid);
            if (found == preview.allowed.end()) {
                end(oneFlow(pid));
                return onDone(fmt::format("{} is protected · {}", oneLine(name),
                    preview.refused.empty() ? "not in the snapshot"
                                            : oneLine(preview.refused.front().reason)));
            }
            ask([this, name, onDone, target = engine_.hold({ *found }).front()] {
                askStopOne(name, target, onDone);
            });
        });
}

void JanitorTab::askStopOne(
    const std::string& name, const StopTarget& target, const std::function<void(const std::string&)>& onDone)
{
    const bool agreed = platform_.alerts.runModal(stopOneAlert(name, target.process)) == actButton;
    end(oneFlow(target.process.pid));
    if (!agreed)
        return onDone(fmt::format("cancelled · {} pid {} left running", oneLine(name), target.process.pid));
    const std::string outcome = engine_.stop(target);
    loadReceipts();
    onDone(outcome);
}

} // namespace ostrel
