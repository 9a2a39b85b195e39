// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorTab.h"

#include "core/LocalTime.h"
#include "core/Text.h"
#include "janitor/JanitorAlerts.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

std::string filesFlow(std::string_view group) { return fmt::format("files {}", group); }

/// How a cleanup ended, in one line. Figures are told only where the script gave some.
std::string cleanOutcome(const JanitorCleanResult& result)
{
    if (!result.answered())
        return fmt::format("cleanup failed · {} · what was removed is unknown", oneLine(result.error));
    const std::string refused
        = result.failedCount > 0 ? fmt::format(" · {} refused", result.failedCount) : std::string();
    const std::string figures
        = fmt::format("{} files removed · {} freed{}", result.removed, mb(result.freedMB), refused);
    const std::string receipt
        = fmt::format(" · receipt {}", result.receipt.substr(result.receipt.rfind('/') + 1));
    if (result.error.empty())
        return fmt::format("✓ {}{}", figures, receipt);
    // One that never began has left no receipt.
    return fmt::format("cleanup stopped · {} · {}{}", oneLine(result.error), figures,
        result.removed > 0 ? receipt : std::string());
}

} // namespace

JanitorTab::JanitorTab(const Platform& platform)
    : platform_(platform)
    , protection_(platform.defaults)
    , engine_(platform.engine, protection_)
{
}

FindingsBody JanitorTab::findingsBody()
{
    loadOnce();
    return ostrel::findingsBody(state_);
}

CleanupBody JanitorTab::cleanupBody()
{
    loadOnce();
    return ostrel::cleanupBody(state_, cacheTargets());
}

JanitorSection JanitorTab::settingsSection() const
{
    return janitorSection(state_, protection_.displayList(), cacheTargets());
}

std::vector<std::string> JanitorTab::cacheTargets() const
{
    return platform_.defaults.textArray(cacheTargetsKey).value_or(std::vector<std::string>());
}

void JanitorTab::loadOnce()
{
    if (state_.loaded)
        return;
    state_.loaded = true;
    collect();
    loadReceipts();
    engine_.groups([this](JanitorGroups groups) {
        state_.groups = std::move(groups);
        rebuild();
    });
}

void JanitorTab::collect()
{
    state_.running = true;
    state_.status = "reading this Mac: ps, vm_stat, df, file ages";
    // Of two readings at once the later one counts: the earlier may not have seen the last action.
    engine_.findings(
        [this, reading = ++readings_](std::vector<JanitorFinding> findings, const std::string& error) {
            if (reading != readings_)
                return;
            state_.running = false;
            state_.findings = std::move(findings);
            state_.status = error.empty()
                ? fmt::format("{} findings · collected {}", state_.findings.size(), now())
                : fmt::format("collector unavailable · {}", oneLine(error));
            rebuild();
        });
}

void JanitorTab::loadReceipts()
{
    engine_.receiptLines(JanitorReceipts::shownLimit, [this](std::vector<std::string> lines) {
        state_.receiptLines = std::move(lines);
        rebuild();
    });
}

void JanitorTab::reloadAll()
{
    loadReceipts();
    collect();
    rebuild();
}

void JanitorTab::rebuild()
{
    if (body_ && (body_->mode() == OstrelMode::diagnosis || body_->mode() == OstrelMode::cleanup))
        body_->renderBody();
}

void JanitorTab::rebuildSettings()
{
    if (body_ && body_->mode() == OstrelMode::settings)
        body_->renderBody();
    rebuild();
}

std::string JanitorTab::now() const { return localClockText(platform_.engine.clock.now()); }

void JanitorTab::say(std::string lastAction)
{
    state_.lastAction = std::move(lastAction);
    rebuild();
}

std::vector<std::string> JanitorTab::selectionFor(std::string_view group) const
{
    auto selected = group == cachesGroup ? cacheTargets() : std::vector<std::string>();
    // A comma joins names on the way to the script: such a name would be taken for two that nobody picked.
    std::erase_if(selected, [](const std::string& name) { return name.find(',') != std::string::npos; });
    return selected;
}

bool JanitorTab::begin(const std::string& flow) { return flows_.insert(flow).second; }

void JanitorTab::end(const std::string& flow) { flows_.erase(flow); }

void JanitorTab::ask(std::function<void()> question)
{
    if (asking_) {
        questions_.push_back(std::move(question));
        return;
    }
    asking_ = true;
    question();
    asking_ = false;
    if (questions_.empty())
        return;
    platform_.engine.mainQueue.post(life_.guard([this, next = std::move(questions_.front())] { ask(next); }));
    questions_.pop_front();
}

void JanitorTab::refreshFindings()
{
    if (state_.running)
        return;
    collect();
    rebuild();
}

void JanitorTab::openTab(std::string_view target)
{
    if (onOpenTab_)
        onOpenTab_(target);
}

void JanitorTab::pressFinding(const JanitorFinding& finding)
{
    switch (finding.action.kind) {
    case JanitorAction::Kind::none:
        return;
    case JanitorAction::Kind::openTab:
        return openTab(finding.action.target);
    case JanitorAction::Kind::clean:
        return openTab("cleanup");
    case JanitorAction::Kind::kill:
        return confirmStop(finding.action.pids, finding.title);
    }
}

void JanitorTab::pressFiles(const std::string& group)
{
    if (!begin(filesFlow(group)))
        return;
    state_.status = fmt::format("listing {}; nothing is deleted yet", oneLine(shownTitle(state_, group)));
    rebuild();
    // What was listed is what goes: the selection is the same for both.
    const auto selected = selectionFor(group);
    engine_.preview(group, selected, [this, group, selected](JanitorPreview preview) {
        filesListed(group, selected, std::move(preview));
    });
}

void JanitorTab::filesListed(const std::string& group, const Names& selected, JanitorPreview preview)
{
    if (selected != selectionFor(group)) {
        end(filesFlow(group));
        return say("the picked caches changed meanwhile; nothing was deleted, press again");
    }
    state_.status = fmt::format("{} in {} · listed {}", filesText(preview), oneLine(group), now());
    if (!preview.error.empty())
        state_.lastAction = oneLine(preview.error);
    else if (preview.count <= 0)
        state_.lastAction = "nothing to delete at this depth";
    state_.previews.insert_or_assign(group, preview);
    rebuild();
    if (!preview.error.empty() || preview.count <= 0)
        return end(filesFlow(group));
    ask([this, group, selected, preview = std::move(preview)] { confirmClean(group, selected, preview); });
}

void JanitorTab::confirmClean(const std::string& group, const Names& selected, const JanitorPreview& preview)
{
    if (platform_.alerts.runModal(cleanAlert(group, preview)) != actButton) {
        end(filesFlow(group));
        return say(fmt::format("cancelled · {}", oneLine(preview.title)));
    }
    say(fmt::format("deleting {} files…", preview.count));
    engine_.clean(group, selected, [this, group](const JanitorCleanResult& result) {
        end(filesFlow(group));
        state_.lastAction = cleanOutcome(result);
        if (const auto listed = state_.previews.find(group); listed != state_.previews.end())
            state_.previews.erase(listed);
        reloadAll();
    });
}

void JanitorTab::openReceipts()
{
    const std::string folder = engine_.receipts().receiptsDirectory();
    // Before the first receipt there is nothing to open.
    platform_.engine.files.createDirectories(folder);
    platform_.workspace.open(fileUrl(folder));
}

bool JanitorTab::protectName(std::string_view text)
{
    if (trimmed(text).empty())
        return false;
    protection_.add(text);
    state_.lastAction = fmt::format("{} added to the protection list", oneLine(lowered(text)));
    rebuildSettings();
    return true;
}

void JanitorTab::confirmUnprotect(const std::string& name)
{
    if (!begin("unprotect " + name))
        return;
    // In a turn of its own: the control that asks may go meanwhile.
    platform_.engine.mainQueue.post(life_.guard([this, name] { ask([this, name] { askUnprotect(name); }); }));
}

void JanitorTab::askUnprotect(const std::string& name)
{
    const bool agreed = platform_.alerts.runModal(unprotectAlert(name)) == actButton;
    end("unprotect " + name);
    if (!agreed)
        return;
    protection_.remove(name);
    engine_.receipts().writeReceipt({ { "kind", "protection" }, { "name", name }, { "change", "removed" } });
    state_.lastAction = fmt::format("{} is no longer protected · receipt written", oneLine(name));
    rebuildSettings();
}

void JanitorTab::listCaches()
{
    engine_.cacheCandidates([this](std::vector<CacheCandidate> candidates) {
        state_.cacheCandidates = std::move(candidates);
        rebuildSettings();
    });
}

void JanitorTab::pickCache(const std::string& name, bool picked)
{
    auto targets = cacheTargets();
    std::erase(targets, name);
    if (!picked)
        targets.push_back(name);
    platform_.defaults.setTextArray(cacheTargetsKey, targets);
    // What is listed there was listed for another selection.
    if (const auto listed = state_.previews.find(cachesGroup); listed != state_.previews.end())
        state_.previews.erase(listed);
    state_.lastAction
        = fmt::format("{} {} the cleanup list", oneLine(name), picked ? "removed from" : "added to");
    rebuildSettings();
}

} // namespace ostrel
