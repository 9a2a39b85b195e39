// SPDX-License-Identifier: Apache-2.0
/// Whatever the janitor's script prints is read or refused; what was read can be told and asked about in
/// bounded room, on lines of its own; and no protection is lost by other bytes around a name.
#include "core/Json.h"
#include "janitor/JanitorAlerts.h"
#include "janitor/JanitorReceipts.h"
#include "janitor/JanitorText.h"
#include "janitor/ProtectionList.h"

#include "fuzz/FuzzTarget.h"

#include <algorithm>
#include <string>

namespace {

using namespace ostrel;

std::ptrdiff_t linesOf(const platform::Alert& alert) { return std::ranges::count(alert.text, '\n'); }

void readReply(const json::Value& object)
{
    JanitorState state;
    state.findings = parseFindings(object);
    state.groups = JanitorGroups::parse(object);
    state.cacheCandidates = parseCandidates(object);
    state.receiptLines = receiptLines(object, JanitorReceipts::shownLimit);
    check(state.receiptLines.size() <= JanitorReceipts::shownLimit);
    const auto preview = JanitorPreview::parse(object, "agents-deep");
    const auto kills = JanitorKillPreview::parse(object);
    check(preview.files.size() <= JanitorPreview::mostFiles);
    check(linesOf(cleanAlert("agents-deep", preview)) <= 14);
    check(linesOf(stopMCPAlert("deep", kills)) <= 16);
    check(linesOf(stopFindingAlert("title\n", kills)) <= 16);
    for (const JanitorProcess& process : kills.allowed)
        check(linesOf(stopOneAlert(process.name, process)) == 3);
    state.previews.emplace("agents-deep", preview);
    state.processPreviews.emplace("deep", kills);
    check(findingsBody(state).cards.size() == state.findings.size());
    (void)cleanupBody(state, {});
    (void)JanitorCleanResult::parse(object, "g", "/r");
}

void protectWhateverStandsAround(std::string_view text)
{
    const ProtectionRules rules({ "claude", "ostrel app" });
    const std::string around(text);
    check(rules.protects(around, around + "\tClaude " + around));
    check(rules.protects(around, around + "/OSTREL App"));
}

} // namespace

void runOn(std::string_view text)
{
    protectWhateverStandsAround(text);
    if (const auto object = json::parseObject(text))
        readReply(*object);
}
