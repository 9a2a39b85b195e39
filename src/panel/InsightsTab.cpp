// SPDX-License-Identifier: Apache-2.0
#include "panel/InsightsTab.h"

#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "janitor/FindingsView.h"
#include "panel/InsightsText.h"
#include "panel/LineBox.h"
#include "panel/MaintenanceSection.h"
#include "panel/PanelSize.h"
#include "panel/SourcedViews.h"

#include <QVBoxLayout>

#include <cstddef>

namespace ostrel {

namespace {

constexpr int runHeight = 30;
constexpr int actionHeight = 32;

void addRule(QVBoxLayout& body, int above, int below)
{
    body.addSpacing(above);
    body.addWidget(separator(contentWidth));
    body.addSpacing(below);
}

void addNote(QVBoxLayout& body, std::string_view text)
{
    body.addWidget(wrappingLabel(utf16(text), 10, QFont::Normal, OstrelStyle::muted, contentWidth));
}

void addVerdict(QVBoxLayout& body, const OstrelData& data, const PanelState& state)
{
    body.addWidget(section("verdict of the snapshot collector", contentWidth));
    body.addWidget(
        wrappingLabel(utf16(data.verdict.cause), 13, QFont::Normal, OstrelStyle::ink, contentWidth));
    const auto age = snapshotAgeOr(state.snapshots.snapshotAgeText());
    body.addWidget(sourceView(sourceLine("collector verdict over one ps snapshot", age), contentWidth));
    body.addSpacing(10);
}

void addCollector(QVBoxLayout& body, const SnapshotCycle& snapshots)
{
    const LineBox box(body);
    box.title("LOCAL COLLECTOR");
    const auto lines
        = collectorLines(snapshots.backendState(), snapshots.backendLastSource(), snapshots.pyPath());
    box.add(lines[0], 11, OstrelStyle::ink);
    for (std::size_t at = 1; at < lines.size(); ++at)
        box.add(lines[at], 10.5, OstrelStyle::muted);
    body.addSpacing(12);
}

void addFacts(QVBoxLayout& body, const OstrelData& data)
{
    const LineBox box(body);
    box.title("CURRENT FACTS BEFORE ANALYZE");
    const auto facts = currentFacts(data);
    box.add(facts[0], 10.5, OstrelStyle::ink);
    box.add(facts[1], 10.5, OstrelStyle::muted);
    box.add(facts[2], 10.5, OstrelStyle::muted);
    box.add(facts[3], 9, OstrelStyle::muted);
    body.addSpacing(12);
}

void addResult(QVBoxLayout& body, LocalAnalyst& analyst)
{
    const Diagnosis& diagnosis = analyst.diagnosis();
    addNote(body, diagnosis.summary);
    body.addSpacing(4);
    if (!diagnosis.text.empty()) {
        LineBox(body).add(diagnosis.text, 10.5, OstrelStyle::ink);
        body.addSpacing(6);
    }
    for (std::size_t at = 0; at < diagnosis.actions.size(); ++at) {
        const DiagActionButton words = diagActionButton(diagnosis.actions[at]);
        auto* button = new OstrelButton(
            utf16(words.title), contentWidth, [&analyst, at] { analyst.execDiagAction(at); }, actionHeight);
        ostrelTip(button, utf16(words.tooltip));
        if (!words.accessibilityLabel.empty())
            button->setAccessibleName(utf16(words.accessibilityLabel));
        body.addWidget(button);
        body.addSpacing(4);
    }
}

void addAnalysis(QVBoxLayout& body, LocalAnalyst& analyst)
{
    const bool running = analyst.diagnosisRunning();
    body.addWidget(section("analysis · local CLI", contentWidth));
    auto* run = new OstrelButton(
        running ? "running local analysis…" : "▶ run local analyst", contentWidth,
        [&analyst] { analyst.runDiagnosis(); }, runHeight);
    ostrelTip(run, "run the local CLI analyst over this snapshot; it suggests actions and stops nothing");
    run->setActive(running);
    run->setEnabled(!running);
    body.addWidget(run);
    body.addSpacing(8);
    switch (analysisView(running, analyst.diagnosis())) {
    case AnalysisView::running:
        return addNote(body, "running python3 ostrel.py analyze");
    case AnalysisView::result:
        return addResult(body, analyst);
    case AnalysisView::raw:
        addNote(body, "couldn't parse actions – raw output:");
        body.addSpacing(4);
        return LineBox(body).add(analyst.diagnosis().text, 11, OstrelStyle::ink);
    case AnalysisView::idle:
        return addNote(body, "not run yet – press local analyst; it does not spawn Claude or MCP");
    }
}

} // namespace

void renderDiagnosis(QVBoxLayout& body, const OstrelData& data, const PanelState& state, JanitorTab& janitor,
    LocalAnalyst& analyst, Maintenance& maintenance)
{
    body.addWidget(findingsView(janitor, contentWidth));
    addRule(body, 12, 12);
    addVerdict(body, data, state);
    addCollector(body, state.snapshots);
    if (analyst.diagnosis().empty() && !analyst.diagnosisRunning())
        addFacts(body, data);
    addRule(body, 0, 8);
    addAnalysis(body, analyst);
    addRule(body, 16, 12);
    renderCleanup(body, data, state.snapshots.backendLastSource(), maintenance);
    body.addSpacing(8);
}

} // namespace ostrel
